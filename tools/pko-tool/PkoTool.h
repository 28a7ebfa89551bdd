#ifndef PKOTOOL_H
#define PKOTOOL_H

#include "ToolArguments.h"

#include <PkoAPI/Camera.h>

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cstdio>

class FeatureLayout;
struct LoadReport;

// The commands of pko-tool. Each prints its results as text on standard
// output (problems on standard error), or with --json one JSON object on
// standard output, and returns the exit code.
class PkoTool {
public:
    enum ExitCode {
        ExitOk = 0,          // everything applied (adjusted counts as applied); no difference
        ExitRefused = 1,     // some write refused or not available; differences found
        ExitBadInput = 2,    // bad file or arguments
        ExitCameraLost = 3,  // camera not found, not opened, or lost
    };

    PkoTool(FILE* out, FILE* err) : m_Out(out), m_Err(err) {}

    // arguments without the program name.
    int Run(const QStringList& arguments);

    static QString HelpText();

private:
    int List();
    int Features(const QStringList& positional, const ToolArguments& arguments);
    int Get(const QStringList& positional);
    int Set(const QStringList& positional);
    int Save(const QStringList& positional, const ToolArguments& arguments);
    int Load(const QStringList& positional, const ToolArguments& arguments);
    int Diff(const QStringList& positional);

    // Finds and opens the camera; ExitOk, or ExitCameraLost with the reason
    // reported.
    int OpenCamera(const QString& id);
    int LoadLayout(FeatureLayout& layout);
    // Ends a command: prints the JSON object in --json mode, closes the
    // camera, writes the simulated camera's journal when asked to (see
    // PKO_TOOL_JOURNAL in the man page). Returns code.
    int Finish(int code);
    // A problem that ends the command with code.
    int Fail(int code, const QString& message);
    void Print(const QString& line);
    void PrintError(const QString& line);
    void PrintLoadReport(const LoadReport& report, bool verbose);

    FILE* m_Out;
    FILE* m_Err;
    bool m_Json = false;
    QJsonObject m_Result;
    ZMT::PkoAPI::CameraPtr m_Camera;
    QString m_CameraId;
};

#endif  // PKOTOOL_H
