#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

#include "app/zbcommandvalidation.h"

class QAction;
class QMenuBar;

// Keeps the menu commands' enabling, titles and check marks in step with the
// program's state. The rules are ZBCommandValidation's; this class takes the
// state when a menu opens and whenever something a rule reads has changed, so
// that a key shortcut never runs a command its menu would show disabled.
class ZBMenuValidator : public QObject
{
    Q_OBJECT

public:
    using StateSource = std::function<ZBCommandState()>;

    ZBMenuValidator(QMenuBar *bar, StateSource state, QObject *parent = nullptr);

    // A command whose item carries a tag; items without one keep their state.
    void addAction(QAction *action);
    // Validates every command now (`_localizeMenu:` at start).
    void validateAll();

public Q_SLOTS:
    // Something changed: validate once the event loop turns, however many
    // changes came in between.
    void scheduleValidation();

private:
    void apply(QAction *action, const ZBCommandState &state) const;

    StateSource m_state;
    QList<QPointer<QAction>> m_actions;
    bool m_scheduled = false;
};
