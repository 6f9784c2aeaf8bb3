#pragma once

#include <exception>

#include <QByteArray>
#include <QString>

// A fault of the installation or of the program itself, such as a string table
// missing from the application's resources. It is thrown, never caught by the
// program: carrying on without the English texts would show raw keys
// everywhere.
class ZBCriticalError : public std::exception
{
public:
    ZBCriticalError(const QString &name, const QString &reason);

    // "Critical error" / "<table>.strings not found"
    static ZBCriticalError missingStringTable(const QString &table);

    QString name() const { return m_name; }
    QString reason() const { return m_reason; }
    const char *what() const noexcept override;

private:
    QString m_name;
    QString m_reason;
    QByteArray m_what;
};
