// The error path: what the outside handler receives, the debug box, debug modes, re-raising.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/Component.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "core/Services.h"
#include "platform/Hooks.h"
#include "support/TestSupport.h"
#include "support/mLog.h"

namespace tnw {
namespace {

using test::ScopedCapture;

const std::string kTitle = "Debug Mode Error Handler (tnwtest)";

TEST(ErrorPath, HandlerGetsSevenArgumentsInOrderThenTheBox) {
    ScopedCapture capture(1);
    mLog::ErrorLog("tnwASCIIDecoder.MoveNext", Error(53, "tnwEncoders", "File not found"));
    ASSERT_EQ(capture.vReports.size(), 1u);
    const auto& r = capture.vReports[0];
    EXPECT_EQ(r.sApplication, "tnwtest");
    EXPECT_EQ(r.sVersion, "1.2.3");
    EXPECT_EQ(r.sSource, "tnwASCIIDecoder.MoveNext");
    EXPECT_EQ(r.lNumber, 53);
    EXPECT_EQ(r.sErrSource, "tnwEncoders");
    EXPECT_EQ(r.sDescription, "File not found");
    EXPECT_EQ(r.sMoreInfo, "");
    EXPECT_EQ(capture.vEvents, (std::vector<std::string>{"report", "box"}));
    ASSERT_EQ(capture.vBoxes.size(), 1u);
    EXPECT_EQ(capture.vBoxes[0].sTitle, kTitle);
    EXPECT_EQ(capture.vBoxes[0].eIcon, platform::MsgIcon::Exclamation);
    EXPECT_EQ(capture.vBoxes[0].sText,
              "Error:  53\r\n"
              "Source: tnwASCIIDecoder.MoveNext::tnwEncoders.\r\n"
              "Description: File not found");
}

TEST(ErrorPath, BoxNumberTextAndEmptyErrorSource) {
    ScopedCapture capture(1);
    mLog::ErrorLog("tnwGPLEncoder.Update", Error(errCantAccessSource, "", "Cannot open"));
    mLog::ErrorLog("tnwGPLEncoder.Update", Error(-1, "x", "d"));
    mLog::ErrorLog("tnwGPLEncoder.Update", Error(0, "x", "d"));
    ASSERT_EQ(capture.vBoxes.size(), 3u);
    EXPECT_EQ(capture.vBoxes[0].sText,
              "Error:  80040005\r\nSource: tnwGPLEncoder.Update::.\r\nDescription: Cannot open");
    EXPECT_EQ(capture.vBoxes[1].sText.substr(0, 18), "Error:  FFFFFFFF\r\n");
    EXPECT_EQ(capture.vBoxes[2].sText.substr(0, 11), "Error:  0\r\n");
    EXPECT_EQ(capture.vReports[0].lNumber, static_cast<std::int32_t>(0x80040005u));
}

TEST(ErrorPath, MoreInfoIsCutAfter750Characters) {
    ScopedCapture capture(1);
    const std::string sHead = "Error:  5\r\nSource: s::e.\r\nDescription: d\r\n\r\nMore Info: ";
    std::string sAccents;  // 751 two-byte letters
    for (int i = 0; i < 751; ++i)
        sAccents += "\xC3\xA9";
    const std::string sAccents750 = sAccents.substr(0, 1500);
    mLog::AddToErrorLog("s", 5, "e", "d", "short", -1);
    mLog::AddToErrorLog("s", 5, "e", "d", std::string(750, 'x'), -1);
    mLog::AddToErrorLog("s", 5, "e", "d", std::string(751, 'y'), -1);
    mLog::AddToErrorLog("s", 5, "e", "d", sAccents750, -1);
    mLog::AddToErrorLog("s", 5, "e", "d", sAccents, -1);
    ASSERT_EQ(capture.vBoxes.size(), 5u);
    EXPECT_EQ(capture.vBoxes[0].sText, sHead + "short");
    // Long texts are compared without printing them.
    EXPECT_TRUE(capture.vBoxes[1].sText == sHead + std::string(750, 'x')) << "750 stays whole";
    EXPECT_TRUE(capture.vBoxes[2].sText == sHead + std::string(750, 'y') + " ...more... ")
        << "751 is cut to 750";
    // Characters count, not bytes: 750 two-byte letters stay whole, 751 are cut to 750.
    EXPECT_TRUE(capture.vBoxes[3].sText == sHead + sAccents750) << "750 letters stay whole";
    EXPECT_TRUE(capture.vBoxes[4].sText == sHead + sAccents750 + " ...more... ")
        << "751 letters are cut to 750";
    // The handler gets the full text.
    EXPECT_TRUE(capture.vReports[2].sMoreInfo == std::string(751, 'y'));
}

TEST(ErrorPath, DisplayArgumentOverridesTheDebugMode) {
    ScopedCapture capture(1);
    mLog::AddToErrorLog("s", 5, "e", "d", "", 0);
    EXPECT_EQ(capture.vEvents, (std::vector<std::string>{"report"}));
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{0});
    mLog::AddToErrorLog("s", 5, "e", "d", "", 7);
    EXPECT_EQ(capture.vEvents, (std::vector<std::string>{"report", "report", "box"}));
}

TEST(ErrorPath, DebugModes) {
    const Error oError(53, "src", "File not found");
    {
        ScopedCapture capture(0, 1);  // the user's 0 hides the machine's 1
        EXPECT_THROW(mLog::ErrorLog("c.Op", oError, "", true), Error);
        EXPECT_TRUE(capture.vBoxes.empty());
        EXPECT_EQ(capture.vReports.size(), 1u);
    }
    {
        ScopedCapture capture(2);
        EXPECT_NO_THROW(mLog::ErrorLog("c.Op", oError, "", true));
        EXPECT_EQ(capture.vBoxes.size(), 1u);
    }
    for (std::int32_t lMode : {1, 3, -1}) {
        ScopedCapture capture(lMode);
        EXPECT_THROW(mLog::ErrorLog("c.Op", oError, "", true), Error) << lMode;
        EXPECT_EQ(capture.vBoxes.size(), 1u) << lMode;
    }
    {
        ScopedCapture capture(-99, 2);  // unset per user: the machine's value counts
        EXPECT_NO_THROW(mLog::ErrorLog("c.Op", oError, "", true));
        EXPECT_EQ(capture.vBoxes.size(), 1u);
        capture.mUser.clear();
        capture.mMachine.clear();  // neither set: mode 0
        EXPECT_THROW(mLog::ErrorLog("c.Op", oError, "", true), Error);
        EXPECT_EQ(capture.vBoxes.size(), 1u);
    }
}

TEST(ErrorPath, ModeIsReadAgainForEachReport) {
    ScopedCapture capture(0);
    mLog::ErrorLog("c.Op", Error(5, "", "d"));
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{1});
    mLog::ErrorLog("c.Op", Error(5, "", "d"));
    EXPECT_EQ(capture.vEvents, (std::vector<std::string>{"report", "report", "box"}));
}

TEST(ErrorPath, ReRaiseExtendsTheSource) {
    ScopedCapture capture(0);
    try {
        mLog::ErrorLog("tnwX.Op", Error(75, "inner", "Path/File access error"), "", true);
        FAIL() << "no re-raise";
    } catch (const Error& e) {
        EXPECT_EQ(e.lNumber, 75);
        EXPECT_EQ(e.sSource, "tnwX.Op::inner");
        EXPECT_EQ(e.sDescription, "Path/File access error");
    }
    try {
        mLog::ErrorLog("tnwX.Op", Error(75, "", "d"), "", true);
        FAIL() << "no re-raise";
    } catch (const Error& e) {
        EXPECT_EQ(e.sSource, "tnwX.Op");
    }
    EXPECT_NO_THROW(mLog::ErrorLog("tnwX.Op", Error(75, "inner", "d")));
}

TEST(ErrorPath, NoReRaiseFromClassTerminate) {
    ScopedCapture capture(1);
    EXPECT_NO_THROW(mLog::ErrorLog("tnwX.Class_Terminate", Error(5, "", "d"), "", true));
    // The last 16 characters of the extended source count, not the operation's name.
    EXPECT_NO_THROW(mLog::ErrorLog("tnwX.Op", Error(5, "y.Class_Terminate", "d"), "", true));
    EXPECT_THROW(mLog::ErrorLog("tnwX.Class_Terminate", Error(5, "inner", "d"), "", true), Error);
    EXPECT_THROW(mLog::ErrorLog("Class_Terminate", Error(5, "", "d"), "", true), Error);
}

TEST(ErrorPath, NoHandlerCreatableIsSilent) {
    ScopedCapture capture(0);
    tnwObjectFactory::Register(kProgIdErrorHandler, nullptr);
    EXPECT_NO_THROW(mLog::ErrorLog("c.Op", Error(5, "", "d")));
    EXPECT_TRUE(capture.vEvents.empty());
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{1});
    mLog::ErrorLog("c.Op", Error(5, "", "d"));
    EXPECT_EQ(capture.vEvents, (std::vector<std::string>{"box"}));
}

class CountingHandler final : public ItnwErrorHandler {
public:
    explicit CountingHandler(int& nAlive) : m_nAlive(nAlive) { ++m_nAlive; }
    ~CountingHandler() override { --m_nAlive; }
    void errorMessage(const std::string&, const std::string&, const std::string&, std::int32_t,
                      const std::string&, const std::string&, const std::string&) override {
        ++nCalls;
    }
    int nCalls = 0;

private:
    int& m_nAlive;
};

TEST(ErrorPath, EachReportCreatesAndReleasesItsOwnHandler) {
    ScopedCapture capture(1);
    int nAlive = 0;
    int nMade = 0;
    tnwObjectFactory::Register(kProgIdErrorHandler, [&] {
        ++nMade;
        return std::make_shared<CountingHandler>(nAlive);
    });
    std::vector<std::string> vBoxes;
    auto fnOld = platform::SetMessageBoxHook(
        [&](const std::string& sText, const std::string&, platform::MsgIcon) {
            EXPECT_EQ(nAlive, 0) << "handler still held when the box shows";
            vBoxes.push_back(sText);
        });
    mLog::ErrorLog("c.One", Error(5, "", "d"));
    mLog::ErrorLog("c.Two", Error(6, "", "d"));
    platform::SetMessageBoxHook(fnOld);
    EXPECT_EQ(nMade, 2);
    EXPECT_EQ(nAlive, 0);
    ASSERT_EQ(vBoxes.size(), 2u);
    EXPECT_NE(vBoxes[0].find("c.One"), std::string::npos);
    EXPECT_NE(vBoxes[1].find("c.Two"), std::string::npos);
}

TEST(ErrorPath, ErrorLoggerSettingNamesTheHandler) {
    ScopedCapture capture(0);
    int nAlive = 0;
    std::shared_ptr<CountingHandler> oOther;
    tnwObjectFactory::Register("Host.Logger", [&] {
        oOther = std::make_shared<CountingHandler>(nAlive);
        return oOther;
    });
    capture.mMachine["Software\\Tarnwick\\Common/ErrorLogger"] = Variant("Host.Logger");
    mLog::ErrorLog("c.Op", Error(5, "", "d"));
    tnwObjectFactory::Register("Host.Logger", nullptr);
    ASSERT_NE(oOther, nullptr);
    EXPECT_EQ(oOther->nCalls, 1);
    EXPECT_TRUE(capture.vReports.empty());
}

TEST(ErrorPath, FailuresOfTheErrorPathPassToTheCaller) {
    ScopedCapture capture(0);
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant("abc");
    EXPECT_THROW(mLog::ErrorLog("c.Op", Error(5, "", "d")), Error);
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{0});
    // A handler object without errorMessage.
    tnwObjectFactory::Register(kProgIdErrorHandler, [] { return std::make_shared<IComponent>(); });
    EXPECT_THROW(mLog::ErrorLog("c.Op", Error(5, "", "d")), Error);
}

TEST(Guard, ReportsUnderItsSourceAndGivesFalse) {
    ScopedCapture capture(0);
    EXPECT_TRUE(Guard("tnwX.Fine", [] {}));
    EXPECT_TRUE(capture.vReports.empty());
    EXPECT_FALSE(Guard("tnwX.Update", [] { Raise(errFileNotFound); }));
    EXPECT_FALSE(Guard("tnwX.Update", [] { throw std::runtime_error("boom"); }));
    ASSERT_EQ(capture.vReports.size(), 2u);
    EXPECT_EQ(capture.vReports[0].sSource, "tnwX.Update");
    EXPECT_EQ(capture.vReports[0].lNumber, errFileNotFound);
    EXPECT_EQ(capture.vReports[0].sDescription, "File not found");
    EXPECT_EQ(capture.vReports[1].sDescription, "boom");
    // The error path's own failure is not swallowed.
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant("abc");
    EXPECT_THROW(Guard("tnwX.Update", [] { Raise(errFileNotFound); }), Error);
}

}  // namespace
}  // namespace tnw
