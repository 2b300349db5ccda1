// Everything the tool says on stderr: its own failures and warnings, the library's error
// reports (through an error handler registered as "tnwLog.tnwHandler"), message boxes, the
// progress bar and the closing summary. It also fixes the library's debug mode.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/GISLib.h"
#include "platform/Hooks.h"

namespace tnw::cli {

class Console {
public:
    // Makes the stand-ins creatable, registers the error handler, routes message boxes here and
    // sets ConDebug to 1 with bDebug, else 0. The bar is drawn only when stderr is a terminal
    // and bQuiet is false; bQuiet also drops the summary.
    Console(bool bQuiet, bool bDebug);
    ~Console();  // puts the message box and settings hooks back
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // "tnw: <sentence>." on a line of its own.
    void Fail(const std::string& sSentence);
    void Warn(const std::string& sSentence);
    void Summary(const std::string& sLine);

    // What the tool is doing when the library reports a failure, e.g. "row 12 of yield.csv";
    // asked only when a report comes. Nothing clears it.
    void SetContext(std::function<std::string()> fnContext) { m_fnContext = std::move(fnContext); }
    // "tnw: <context>: <description> (<source>)." as a failure: it counts in Reports. In debug
    // mode the box that follows a library report tells the rest: number and error source.
    void Report(const std::string& sSource, const std::string& sDescription);
    // Failures reported so far, the library's and the tool's.
    std::int64_t Reports() const { return m_lReports; }
    // Of those, the failures of the file system to take or keep bytes: a full disk, a file
    // that can't be written (errors 61 and 75).
    std::int64_t FileFaults() const { return m_lFileFaults; }
    // The text of the last message box, title first, on one line; "" when none came since the
    // last call. In debug mode boxes are also shown as they come.
    std::string TakeBoxText();

    // A progress receiver drawing "label [=====     ]  42%" on stderr, with the texts of bars 0
    // and 1 after the label. EndProgress clears it.
    std::shared_ptr<tnwGISCallback> Progress(const std::string& sLabel);
    void EndProgress();

    // Reports past this many are counted but not shown.
    static constexpr std::int64_t kShownReports = 20;

private:
    class Handler;
    class Bar;

    // In debug mode the box that follows tells the rest: number and error source.
    void Report(const std::string& sSource, std::int32_t lNumber, const std::string& sDescription);
    void Box(const std::string& sText, const std::string& sTitle);
    void Line(const std::string& sText);
    void DrawBar();

    bool m_bQuiet;
    bool m_bDebug;
    bool m_bTerminal;
    std::function<std::string()> m_fnContext;
    std::int64_t m_lReports = 0;
    std::int64_t m_lFileFaults = 0;
    std::string m_sBoxText;
    std::string m_sBarLabel;
    std::string m_sBarTexts;  // the bars' own texts, each led by a blank
    int m_iBarPercent = -1;   // -1: no bar on screen
    platform::MessageBoxHook m_fnOldBox;
    std::shared_ptr<platform::ISettings> m_oOldSettings;
    ComponentCreator m_fnOldHandler;
};

}  // namespace tnw::cli
