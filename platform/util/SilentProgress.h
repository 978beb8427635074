#pragma once

#include <platform/util/ProgressInterface.h>

namespace util {

/// A progress interface that shows nothing (tests, batch runs).
class SilentProgress final : public ProgressInterface {
public:
    void beginTask(const std::string&) override {}
    void setRange(long long, long long) override {}
    void report(long long) override {}
    void endTask() override {}
};

} // namespace util
