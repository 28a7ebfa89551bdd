#ifndef TOOLARGUMENTS_H
#define TOOLARGUMENTS_H

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

// The command line of pko-tool: the command, its positional arguments and
// its options ("--name", "--name value" or "--name=value").
class ToolArguments {
public:
    // Options that take a value; every other option is a switch.
    explicit ToolArguments(const QSet<QString>& valueOptions) : m_ValueOptions(valueOptions) {}

    // Splits arguments (without the program name). False, with the reason
    // in Error(), for an option value that is missing.
    bool Parse(const QStringList& arguments);

    QString Command() const { return m_Positional.value(0); }
    // The arguments after the command.
    QStringList Positional() const { return m_Positional.mid(1); }
    bool IsSet(const QString& option) const { return m_Switches.contains(option) || m_Values.contains(option); }
    QString Value(const QString& option) const { return m_Values.value(option); }
    // Every option given, switches and options with values.
    QStringList Options() const;
    QString Error() const { return m_Error; }

private:
    QSet<QString> m_ValueOptions;
    QStringList m_Positional;
    QSet<QString> m_Switches;
    QHash<QString, QString> m_Values;
    QString m_Error;
};

#endif  // TOOLARGUMENTS_H
