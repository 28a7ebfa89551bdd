#include "ToolArguments.h"

bool ToolArguments::Parse(const QStringList& arguments)
{
    bool optionsEnded = false;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (optionsEnded || !argument.startsWith(QLatin1String("--")) || argument == QLatin1String("-")) {
            m_Positional.append(argument);
            continue;
        }
        if (argument == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        QString name = argument.mid(2);
        const int equals = name.indexOf(QLatin1Char('='));
        if (equals >= 0) {
            m_Values.insert(name.left(equals), name.mid(equals + 1));
            continue;
        }
        if (m_ValueOptions.contains(name)) {
            if (i + 1 >= arguments.size()) {
                m_Error = QStringLiteral("--%1 needs a value").arg(name);
                return false;
            }
            m_Values.insert(name, arguments.at(++i));
            continue;
        }
        m_Switches.insert(name);
    }
    return true;
}

QStringList ToolArguments::Options() const
{
    QStringList options = m_Switches.values();
    options.append(m_Values.keys());
    options.sort();
    return options;
}
