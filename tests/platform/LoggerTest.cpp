#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/PlatformTestUtil.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/platform/Package.h"

namespace {

using platform_test::LogCapture;
using platform_test::TempDir;

const char kTimestamp[] = R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3})";

void ExpectLines(const std::vector<std::string>& lines, const std::vector<std::string>& patterns) {
    ASSERT_EQ(lines.size(), patterns.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_TRUE(std::regex_match(lines[i], std::regex(patterns[i]))) << lines[i];
    }
}

TEST(Logger, WritesLinesInTheirFormats) {
    LogCapture log;
    vel::LogFailure("VelStr", 42, "CVelStrW::CVelStrW", "cannot converted !! %d", 7);
    { vel::AutoFuncNameLogger scope("Parse", 10, "CParse::ParseForBuf"); }
    vel::FileLogger_Put("a");
    vel::FileLogger_PutLine("b");
    vel::FileLogger_Dump("Parse", 1, "f");
    ExpectLines(log.Lines(),
                {kTimestamp, R"(VelStr\(42\): CVelStrW::CVelStrW: cannot converted !! 7)",
                 R"(Parse\(10\): CParse::ParseForBuf: <[0-9a-f]{8}> : >> START)",
                 R"(Parse\(10\): CParse::ParseForBuf: <[0-9a-f]{8}> : << END)", "ab"});
}

TEST(Logger, IsSilentWhenClosed) {
    TempDir dir;
    EXPECT_FALSE(vel::FileLogger_Open((dir / "missing/vx.log").c_str()));
    EXPECT_FALSE(vel::FileLogger_IsOpen());
    LogCapture log;
    vel::FileLogger_Close();
    vel::LogFailure("Parse", 1, "f", "lost");
    EXPECT_TRUE(log.Lines().empty());
}

TEST(Guard, LogsAndRethrows) {
    LogCapture log;
    EXPECT_EQ(vel::Guarded("Parse", 5, "CParse::F", [] { return 3; }), 3);
    EXPECT_THROW(vel::Guarded("Parse", 5, "CParse::F",
                              []() -> int { throw vel::CVelException("bad call"); }),
                 vel::CVelException);
    EXPECT_THROW(vel::Guarded("Parse", 6, "CParse::G", [] { throw std::runtime_error("dummy"); }),
                 std::runtime_error);
    EXPECT_THROW(vel::Guarded("Parse", 7, "CParse::H", [] { throw 1; }), int);
    ExpectLines(log.Lines(), {kTimestamp, R"(Parse\(5\): CParse::F: 例外発生\(bad call\))",
                              kTimestamp, R"(Parse\(6\): CParse::G: 例外発生\(dummy\))", kTimestamp,
                              R"(Parse\(7\): CParse::H: 例外発生)", "予期せぬ例外が発生"});
}

std::string g_order;

TEST(Package, FinalizeRunsFinalizersLastFirstOnceAndTheNestingLimitIsAtLeastOne) {
    vx::Initialize();
    vx::RegisterFinalizer([] { g_order += 'a'; });
    vx::RegisterFinalizer([] { g_order += 'b'; });
    vx::Finalize();
    vx::Finalize();
    EXPECT_EQ(g_order, "ba");

    EXPECT_EQ(vx::GetNestingLimit(), vx::kDefaultNestingLimit);
    vx::SetNestingLimit(0);
    EXPECT_EQ(vx::GetNestingLimit(), 1);
    vx::SetNestingLimit(vx::kDefaultNestingLimit);
}

}  // namespace
