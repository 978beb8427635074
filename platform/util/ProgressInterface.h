#pragma once

#include <string>

namespace util {

/// Progress reporting for long work: a task is begun with a name, given a
/// range, advanced with report() and ended. Tasks may nest; an implementation
/// shows the innermost one. Library code takes a ProgressInterface* that may
/// be null.
class ProgressInterface {
public:
    virtual ~ProgressInterface() = default;

    virtual void beginTask(const std::string& name) = 0;
    /// Sets the range of the current task; report() values run from min to max.
    virtual void setRange(long long min, long long max) = 0;
    /// Reports the current position within the range.
    virtual void report(long long value) = 0;
    virtual void endTask() = 0;
};

/// Begins a task on a possibly null progress interface and ends it on scope exit.
class ProgressTask {
public:
    ProgressTask(ProgressInterface* progress, const std::string& name, long long min, long long max)
        : m_progress(progress)
    {
        if (m_progress) {
            m_progress->beginTask(name);
            m_progress->setRange(min, max);
        }
    }
    ~ProgressTask()
    {
        if (m_progress)
            m_progress->endTask();
    }
    ProgressTask(const ProgressTask&) = delete;
    ProgressTask& operator=(const ProgressTask&) = delete;

    void report(long long value)
    {
        if (m_progress)
            m_progress->report(value);
    }

private:
    ProgressInterface* m_progress;
};

} // namespace util
