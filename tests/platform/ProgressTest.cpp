#include <platform/util/ProgressInterface.h>
#include <platform/util/TerminalProgress.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using util::TerminalProgress;

namespace {

// An anonymous temporary file standing in for the terminal.
class ProgressTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(file, nullptr); }
    void TearDown() override
    {
        if (file)
            std::fclose(file);
    }

    std::string written()
    {
        std::fflush(file);
        const long end = std::ftell(file);
        std::string text(static_cast<std::size_t>(end), '\0');
        std::rewind(file);
        const std::size_t got = std::fread(text.data(), 1, text.size(), file);
        text.resize(got);
        std::fseek(file, 0, SEEK_END);
        return text;
    }

    std::FILE* file = std::tmpfile();
};

const std::string clearLine = "\r\033[K";

bool endsWith(const std::string& text, const std::string& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

} // namespace

TEST_F(ProgressTest, EnabledBarShowsTaskAndPercentageAndClearsAtTheEnd)
{
    TerminalProgress progress(file, true);
    EXPECT_TRUE(progress.enabled());

    progress.beginTask("Reading CT");
    progress.setRange(0, 200);
    std::string text = written();
    EXPECT_NE(text.find("Reading CT"), std::string::npos) << text;
    EXPECT_NE(text.find("0.0%"), std::string::npos) << text;

    // Redraws are throttled; after the pause the new position is drawn.
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    progress.report(100);
    text = written();
    EXPECT_NE(text.find("50.0%"), std::string::npos) << text;
    EXPECT_NE(text.find("[###############---------------]"), std::string::npos) << text;

    progress.endTask();
    EXPECT_TRUE(endsWith(written(), clearLine));
}

TEST_F(ProgressTest, NestedTaskIsShownUntilItEnds)
{
    TerminalProgress progress(file, true);
    progress.beginTask("outer");
    progress.setRange(0, 4);
    progress.beginTask("inner");
    progress.setRange(0, 10);
    const std::size_t beforeEnd = written().size();

    progress.endTask();
    const std::string afterInner = written().substr(beforeEnd);
    EXPECT_NE(afterInner.find("outer"), std::string::npos) << afterInner;
    EXPECT_EQ(afterInner.find("inner"), std::string::npos) << afterInner;

    progress.endTask();
    EXPECT_TRUE(endsWith(written(), clearLine));
}

TEST_F(ProgressTest, DisabledBarWritesNothing)
{
    {
        TerminalProgress progress(file, false);
        EXPECT_FALSE(progress.enabled());
        progress.beginTask("quiet");
        progress.setRange(0, 10);
        progress.report(5);
        progress.beginTask("never ended");
    }
    // A file is not a terminal: the default is off.
    {
        TerminalProgress progress(file);
        EXPECT_FALSE(progress.enabled());
        progress.beginTask("quiet");
        progress.setRange(0, 10);
        progress.endTask();
    }
    EXPECT_EQ(written(), "");

    TerminalProgress nowhere(nullptr, true);
    EXPECT_FALSE(nowhere.enabled());
    nowhere.beginTask("x");
    nowhere.endTask();
}

TEST(ProgressTask, BeginsAndEndsATaskOnAPossiblyNullInterface)
{
    struct Recorder : util::ProgressInterface {
        void beginTask(const std::string& name) override { calls.push_back("begin " + name); }
        void setRange(long long min, long long max) override
        {
            calls.push_back("range " + std::to_string(min) + " " + std::to_string(max));
        }
        void report(long long value) override { calls.push_back("report " + std::to_string(value)); }
        void endTask() override { calls.push_back("end"); }
        std::vector<std::string> calls;
    } recorder;

    {
        util::ProgressTask task(&recorder, "lines", 1, 9);
        task.report(4);
    }
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"begin lines", "range 1 9", "report 4", "end"}));

    util::ProgressTask none(nullptr, "nothing", 0, 1);
    none.report(1);
}
