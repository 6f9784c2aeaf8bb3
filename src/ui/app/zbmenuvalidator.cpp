#include "ui/app/zbmenuvalidator.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>

#include "localization/zblocalizer.h"

ZBMenuValidator::ZBMenuValidator(QMenuBar *bar, StateSource state, QObject *parent)
    : QObject(parent)
    , m_state(std::move(state))
{
    for (QMenu *menu : bar->findChildren<QMenu *>())
        connect(menu, &QMenu::aboutToShow, this, &ZBMenuValidator::validateAll);
    // A dialog opening or closing changes what may run; focus moves then.
    connect(qApp, &QApplication::focusChanged, this, &ZBMenuValidator::scheduleValidation);
}

void ZBMenuValidator::addAction(QAction *action)
{
    if (action && action->data().toInt() != 0)
        m_actions << action;
}

void ZBMenuValidator::scheduleValidation()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    QTimer::singleShot(0, this, [this]() {
        m_scheduled = false;
        validateAll();
    });
}

void ZBMenuValidator::validateAll()
{
    const ZBCommandState state = m_state();
    for (QAction *action : std::as_const(m_actions))
    {
        if (action)
            apply(action, state);
    }
}

void ZBMenuValidator::apply(QAction *action, const ZBCommandState &state) const
{
    const ZBCommandValidity validity = ZBCommandValidation::validateMenuItem(action->data().toInt(), state);
    action->setEnabled(validity.enabled);
    if (!validity.titleKey.isEmpty())
        action->setText(ZBLocalizer::localizedStringForKey(validity.titleKey));
    else if (!validity.title.isEmpty())
        action->setText(validity.title);
    if (validity.checked)
    {
        action->setCheckable(true);
        action->setChecked(*validity.checked);
    }
}
