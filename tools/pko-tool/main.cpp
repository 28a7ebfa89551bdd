// pko-tool: reads, writes, saves, loads and compares camera settings from
// the command line (see pko-tool --help and doc/pko-tool.1).

#include "PkoTool.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pko-tool"));
    PkoTool tool(stdout, stderr);
    return tool.Run(QCoreApplication::arguments().mid(1));
}
