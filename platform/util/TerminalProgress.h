#pragma once

#include <platform/util/ProgressInterface.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace util {

/// A one-line progress bar on a terminal. It draws only when both standard
/// output and its stream are terminals (so redirected output and CI logs stay
/// clean), redraws at most
/// ten times a second, and clears its line when the outermost task ends.
class TerminalProgress final : public ProgressInterface {
public:
    /// Draws on `stream` (stderr by default, so stdout stays parseable).
    explicit TerminalProgress(std::FILE* stream = stderr);
    /// Draws on `stream` when `enabled`, whatever the stream is (for tests).
    TerminalProgress(std::FILE* stream, bool enabled);
    ~TerminalProgress() override;

    void beginTask(const std::string& name) override;
    void setRange(long long min, long long max) override;
    void report(long long value) override;
    void endTask() override;

    bool enabled() const { return m_enabled; }

private:
    struct Task {
        std::string name;
        long long min = 0;
        long long max = 0;
        long long value = 0;
    };

    void draw(bool force);
    void clearLine();

    std::FILE* m_stream;
    bool m_enabled;
    std::vector<Task> m_tasks;
    std::chrono::steady_clock::time_point m_lastDraw{};
    int m_lastPermille = -1;
};

} // namespace util
