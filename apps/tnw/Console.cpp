#include "Console.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "RegisterStandIns.h"
#include "core/Error.h"
#include "core/Services.h"

namespace tnw::cli {

namespace {

// Line ends of a box text become blanks, so that every message stays on one line.
std::string OneLine(const std::string& sText) {
    std::string sLine;
    for (char c : sText) {
        if (c == '\r') continue;
        sLine += c == '\n' ? ' ' : c;
    }
    return sLine;
}

// The settings store as the tool runs the library: the debug mode from --debug, reports to
// the tool's own handler; everything else from the store underneath.
class ToolSettings final : public platform::ISettings {
public:
    ToolSettings(std::shared_ptr<platform::ISettings> oBase, bool bDebug)
        : m_oBase(std::move(oBase)), m_lDebug(bDebug ? 1 : 0) {}

    Variant GetSetting(const std::string& sApplication, const std::string& sSection,
                       const std::string& sKey, const Variant& vDefault) override {
        if (sKey == "ConDebug") return Variant(m_lDebug);
        return m_oBase->GetSetting(sApplication, sSection, sKey, vDefault);
    }

    Variant ReadValue(std::int32_t lHive, const std::string& sKey, const std::string& sValueName,
                      const Variant& vDefault) override {
        if (sValueName == "ConDebug") return Variant(m_lDebug);
        if (sValueName == "ErrorLogger") return Variant(std::string(kProgIdErrorHandler));
        return m_oBase->ReadValue(lHive, sKey, sValueName, vDefault);
    }

private:
    std::shared_ptr<platform::ISettings> m_oBase;
    std::int32_t m_lDebug;
};

}  // namespace

class Console::Handler final : public ItnwErrorHandler {
public:
    explicit Handler(Console& oConsole) : m_oConsole(oConsole) {}
    void errorMessage(const std::string&, const std::string&, const std::string& sSource,
                      std::int32_t lNumber, const std::string&, const std::string& sDescription,
                      const std::string&) override {
        m_oConsole.Report(sSource, lNumber, sDescription);
    }

private:
    Console& m_oConsole;
};

// Bars 0 and 1: the value of either moves the bar on screen, and their texts follow the label
// ("writing Regions 2 / 3").
class Console::Bar final : public tnwGISCallback {
public:
    explicit Bar(Console& oConsole) : m_oConsole(oConsole) {}
    void SetBarCount(std::int32_t) override {}
    void SetBarText(std::int32_t lBar, const std::string& sText) override {
        if (State* pBar = At(lBar)) pBar->sText = sText;
        ShowTexts();
    }
    void SetBarRange(std::int32_t lBar, double dMin, double dMax) override {
        if (State* pBar = At(lBar)) {
            pBar->dMin = dMin;
            pBar->dMax = dMax;
        }
    }
    void SetBarValue(std::int32_t lBar, double dValue) override {
        const State* pBar = At(lBar);
        if (!pBar || !(pBar->dMax > pBar->dMin)) return;
        const double dShare =
            std::clamp((dValue - pBar->dMin) / (pBar->dMax - pBar->dMin), 0.0, 1.0);
        m_oConsole.m_iBarPercent = static_cast<int>(std::floor(dShare * 100.0));
        m_oConsole.DrawBar();
    }
    void ClearBarText(std::int32_t lBar) override { SetBarText(lBar, ""); }
    void ResetBar(std::int32_t) override {}

private:
    struct State {
        std::string sText;
        double dMin = 0.0;
        double dMax = 100.0;
    };
    State* At(std::int32_t lBar) {
        return lBar == 0 || lBar == 1 ? &m_aBars[static_cast<std::size_t>(lBar)] : nullptr;
    }
    void ShowTexts() {
        std::string& sTexts = m_oConsole.m_sBarTexts;
        sTexts.clear();
        for (const State& tBar : m_aBars)
            if (!tBar.sText.empty()) sTexts += " " + tBar.sText;
    }

    Console& m_oConsole;
    std::array<State, 2> m_aBars;
};

Console::Console(bool bQuiet, bool bDebug)
    : m_bQuiet(bQuiet), m_bDebug(bDebug), m_bTerminal(isatty(STDERR_FILENO) == 1) {
    standins::RegisterStandIns();
    m_fnOldHandler = tnwObjectFactory::Register(
        kProgIdErrorHandler, [this] { return std::make_shared<Handler>(*this); });
    m_fnOldBox =
        platform::SetMessageBoxHook([this](const std::string& sText, const std::string& sTitle,
                                           platform::MsgIcon) { Box(sText, sTitle); });
    m_oOldSettings =
        platform::SetSettings(std::make_shared<ToolSettings>(platform::Settings(), bDebug));
}

Console::~Console() {
    EndProgress();
    platform::SetSettings(m_oOldSettings);
    platform::SetMessageBoxHook(m_fnOldBox);
    tnwObjectFactory::Register(kProgIdErrorHandler, m_fnOldHandler);
}

void Console::Fail(const std::string& sSentence) {
    Line("tnw: " + sSentence + ".");
}

void Console::Warn(const std::string& sSentence) {
    Line("tnw: warning: " + sSentence + ".");
}

void Console::Summary(const std::string& sLine) {
    if (!m_bQuiet) Line("tnw: " + sLine);
}

std::string Console::TakeBoxText() {
    return std::exchange(m_sBoxText, std::string());
}

void Console::Report(const std::string& sSource, const std::string& sDescription) {
    Report(sSource, 0, sDescription);
}

void Console::Report(const std::string& sSource, std::int32_t lNumber,
                     const std::string& sDescription) {
    ++m_lReports;
    if (lNumber == errDiskFull || lNumber == errPathFileAccess) ++m_lFileFaults;
    if (m_lReports > kShownReports + 1) return;
    if (m_lReports == kShownReports + 1) {
        Line("tnw: further failures are counted but not shown.");
        return;
    }
    std::string sText = "tnw: ";
    if (m_fnContext) {
        const std::string sContext = m_fnContext();
        if (!sContext.empty()) sText += sContext + ": ";
    }
    sText += sDescription.empty() ? std::string("failed") : sDescription;
    sText += " (" + sSource + ").";
    Line(sText);
}

void Console::Box(const std::string& sText, const std::string& sTitle) {
    m_sBoxText = OneLine(sTitle + ": " + sText);
    if (m_bDebug) Line("tnw: [box] " + m_sBoxText);
}

std::shared_ptr<tnwGISCallback> Console::Progress(const std::string& sLabel) {
    m_sBarLabel = sLabel;
    m_sBarTexts.clear();
    return std::make_shared<Bar>(*this);
}

void Console::EndProgress() {
    if (m_iBarPercent >= 0 && m_bTerminal && !m_bQuiet) std::fputs("\r\033[K", stderr);
    m_iBarPercent = -1;
}

void Console::Line(const std::string& sText) {
    const bool bBar = m_iBarPercent >= 0 && m_bTerminal && !m_bQuiet;
    if (bBar) std::fputs("\r\033[K", stderr);
    std::fputs(sText.c_str(), stderr);
    std::fputc('\n', stderr);
    if (bBar) DrawBar();
    std::fflush(stderr);
}

void Console::DrawBar() {
    if (!m_bTerminal || m_bQuiet || m_iBarPercent < 0) return;
    constexpr int kWidth = 30;
    const int iFilled = m_iBarPercent * kWidth / 100;
    std::string sBar = "\r" + m_sBarLabel + m_sBarTexts + " [" + std::string(iFilled, '=') +
                       std::string(kWidth - iFilled, ' ') + "] ";
    char aPercent[8];
    std::snprintf(aPercent, sizeof aPercent, "%3d%%", m_iBarPercent);
    sBar += aPercent;
    std::fputs(sBar.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace tnw::cli
