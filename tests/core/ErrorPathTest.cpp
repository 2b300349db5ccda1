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
using Events = std::vector<std::string>;
const Error kError(53, "src", "File not found");

TEST(ErrorPath, HandlerGetsSevenArgumentsInOrderThenTheBox) {
    ScopedCapture capture(1);
    mLog::ErrorLog("tnwASCIIDecoder.MoveNext", Error(53, "tnwEncoders", "File not found"));
    mLog::ErrorLog("tnwGPLEncoder.Update", Error(errCantAccessSource, "", "Cannot open"));
    mLog::ErrorLog("c.Op", Error(-1, "x", "d"));
    mLog::ErrorLog("c.Op", Error(0, "x", "d"));
    ASSERT_EQ(capture.vReports.size(), 4u);
    const auto& r = capture.vReports[0];
    EXPECT_EQ(std::tuple(r.sApplication, r.sVersion, r.sSource, r.lNumber, r.sErrSource,
                         r.sDescription, r.sMoreInfo),
              std::tuple("tnwtest", "1.2.3", "tnwASCIIDecoder.MoveNext", 53, "tnwEncoders",
                         "File not found", ""));
    EXPECT_EQ(capture.vEvents,
              (Events{"report", "box", "report", "box", "report", "box", "report", "box"}));
    EXPECT_EQ(capture.vBoxes[0].sTitle, "Debug Mode Error Handler (tnwtest)");
    EXPECT_EQ(capture.vBoxes[0].eIcon, platform::MsgIcon::Exclamation);
    // The number in hexadecimal when negative; an empty error source stays empty.
    const char* aTexts[] = {
        "Error:  53\r\nSource: tnwASCIIDecoder.MoveNext::tnwEncoders.\r\nDescription: File not "
        "found",
        "Error:  80040005\r\nSource: tnwGPLEncoder.Update::.\r\nDescription: Cannot open",
        "Error:  FFFFFFFF\r\nSource: c.Op::x.\r\nDescription: d",
        "Error:  0\r\nSource: c.Op::x.\r\nDescription: d"};
    for (std::size_t i = 0; i < std::size(aTexts); ++i)
        EXPECT_EQ(capture.vBoxes[i].sText, aTexts[i]);
}

TEST(ErrorPath, MoreInfoIsCutAfter750Characters) {
    ScopedCapture capture(1);
    const std::string sHead = "Error:  5\r\nSource: s::e.\r\nDescription: d\r\n\r\nMore Info: ";
    std::string sAccents;  // 751 two-byte letters: characters count, not bytes
    for (int i = 0; i < 751; ++i)
        sAccents += "\xC3\xA9";
    const std::string sAccents750 = sAccents.substr(0, 1500);
    const std::pair<std::string, std::string> aCases[] = {
        {"short", "short"},
        {std::string(750, 'x'), std::string(750, 'x')},
        {std::string(751, 'y'), std::string(750, 'y') + " ...more... "},
        {sAccents750, sAccents750},
        {sAccents, sAccents750 + " ...more... "}};
    for (const auto& [sMore, sShown] : aCases) {
        capture.vBoxes.clear();
        mLog::AddToErrorLog("s", 5, "e", "d", sMore, -1);
        ASSERT_EQ(capture.vBoxes.size(), 1u);
        EXPECT_TRUE(capture.vBoxes[0].sText == sHead + sShown) << sShown.size() << " bytes shown";
        EXPECT_TRUE(capture.vReports.back().sMoreInfo == sMore) << "the handler gets it all";
    }
}

// The mode: the user's setting, else the machine's, else 0; 2 shows without raising, 1 and
// the rest show and raise, 0 raises only; Display overrides it; it is read for each report.
TEST(ErrorPath, DebugModes) {
    struct Case {
        std::int32_t lUser, lMachine;  // -99: not set
        bool bBox, bRaised;
    };
    for (const Case& t : {Case{0, 1, false, true}, Case{2, 0, true, false}, Case{1, 0, true, true},
                          Case{3, 0, true, true}, Case{-1, 0, true, true},
                          Case{-99, 2, true, false}, Case{-99, -99, false, true}}) {
        SCOPED_TRACE(std::to_string(t.lUser) + "/" + std::to_string(t.lMachine));
        ScopedCapture capture(t.lUser, t.lMachine);
        if (t.lUser == -99) capture.mUser.clear();
        if (t.lMachine == -99) capture.mMachine.clear();
        bool bRaised = false;
        try {
            mLog::ErrorLog("c.Op", kError, "", true);
        } catch (const Error&) {
            bRaised = true;
        }
        EXPECT_EQ(std::pair(capture.vBoxes.size(), bRaised),
                  std::pair(std::size_t{t.bBox}, t.bRaised));
        EXPECT_EQ(capture.vReports.size(), 1u);
    }
    ScopedCapture capture(1);
    mLog::AddToErrorLog("s", 5, "e", "d", "", 0);
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant(std::int32_t{0});
    mLog::AddToErrorLog("s", 5, "e", "d", "", 7);
    mLog::ErrorLog("c.Op", kError);
    EXPECT_EQ(capture.vEvents, (Events{"report", "report", "box", "report"}));
}

TEST(ErrorPath, ReRaiseExtendsTheSourceExceptFromClassTerminate) {
    ScopedCapture capture(0);
    const std::pair<std::string, std::string> aRaised[] = {{"inner", "tnwX.Op::inner"},
                                                           {"", "tnwX.Op"}};
    for (const auto& [sInner, sSource] : aRaised) {
        try {
            mLog::ErrorLog("tnwX.Op", Error(75, sInner, "Path/File access error"), "", true);
            ADD_FAILURE() << "no re-raise";
        } catch (const Error& e) {
            EXPECT_EQ(std::tuple(e.lNumber, e.sSource, e.sDescription),
                      std::tuple(75, sSource, "Path/File access error"));
        }
    }
    EXPECT_NO_THROW(mLog::ErrorLog("tnwX.Op", Error(75, "inner", "d")));
    // The last 16 characters of the extended source count, not the operation's name.
    EXPECT_NO_THROW(mLog::ErrorLog("tnwX.Class_Terminate", Error(5, "", "d"), "", true));
    EXPECT_NO_THROW(mLog::ErrorLog("tnwX.Op", Error(5, "y.Class_Terminate", "d"), "", true));
    EXPECT_THROW(mLog::ErrorLog("tnwX.Class_Terminate", Error(5, "inner", "d"), "", true), Error);
    EXPECT_THROW(mLog::ErrorLog("Class_Terminate", Error(5, "", "d"), "", true), Error);
}

class CountingHandler final : public ItnwErrorHandler {
public:
    CountingHandler(int& nAlive, int& nCalls) : m_nAlive(nAlive), m_nCalls(nCalls) { ++m_nAlive; }
    ~CountingHandler() override { --m_nAlive; }
    void errorMessage(const std::string&, const std::string&, const std::string&, std::int32_t,
                      const std::string&, const std::string&, const std::string&) override {
        ++m_nCalls;
    }

private:
    int& m_nAlive;
    int& m_nCalls;
};

// Each report creates its handler and lets it go before the box; the ErrorLogger setting names
// another program id; with none creatable the report is silent.
TEST(ErrorPath, TheHandlerOfEachReport) {
    ScopedCapture capture(1);
    int nAlive = 0, nMade = 0, nCalls = 0;
    tnwObjectFactory::Register("Host.Logger", [&] {
        ++nMade;
        return std::make_shared<CountingHandler>(nAlive, nCalls);
    });
    capture.mMachine["Software\\Tarnwick\\Common/ErrorLogger"] = Variant("Host.Logger");
    int nBoxes = 0;
    auto fnOld =
        platform::SetMessageBoxHook([&](const std::string&, const std::string&, platform::MsgIcon) {
            EXPECT_EQ(nAlive, 0) << "handler still held when the box shows";
            ++nBoxes;
        });
    mLog::ErrorLog("c.One", Error(5, "", "d"));
    mLog::ErrorLog("c.Two", Error(6, "", "d"));
    platform::SetMessageBoxHook(fnOld);
    tnwObjectFactory::Register("Host.Logger", nullptr);
    EXPECT_EQ(std::tuple(nMade, nCalls, nBoxes, nAlive), std::tuple(2, 2, 2, 0));
    EXPECT_TRUE(capture.vReports.empty());

    capture.mMachine.erase("Software\\Tarnwick\\Common/ErrorLogger");
    tnwObjectFactory::Register(kProgIdErrorHandler, nullptr);
    EXPECT_NO_THROW(mLog::ErrorLog("c.Op", Error(5, "", "d")));
    EXPECT_EQ(capture.vEvents, Events{"box"});
}

TEST(ErrorPath, FailuresOfTheErrorPathPassToTheCaller) {
    ScopedCapture capture(0);
    capture.mUser["Tarnwick/Common/ConDebug"] = Variant("abc");
    EXPECT_THROW(mLog::ErrorLog("c.Op", Error(5, "", "d")), Error);
    EXPECT_THROW(Guard("tnwX.Update", [] { Raise(errFileNotFound); }), Error);
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
    EXPECT_EQ(std::tuple(capture.vReports[0].sSource, capture.vReports[0].lNumber,
                         capture.vReports[0].sDescription),
              std::tuple("tnwX.Update", errFileNotFound, "File not found"));
    EXPECT_EQ(capture.vReports[1].sDescription, "boom");
}

}  // namespace
}  // namespace tnw
