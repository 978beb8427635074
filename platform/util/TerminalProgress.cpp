#include <platform/util/TerminalProgress.h>

#include <algorithm>
#include <unistd.h>

namespace util {

namespace {
constexpr int sBarWidth = 30;
constexpr auto sMinRedraw = std::chrono::milliseconds(100);
} // namespace

TerminalProgress::TerminalProgress(std::FILE* stream)
    : TerminalProgress(stream, stream && isatty(fileno(stream)) && isatty(STDOUT_FILENO))
{
}

TerminalProgress::TerminalProgress(std::FILE* stream, bool enabled)
    : m_stream(stream)
    , m_enabled(enabled && stream)
{
}

TerminalProgress::~TerminalProgress()
{
    if (!m_tasks.empty())
        clearLine();
}

void TerminalProgress::beginTask(const std::string& name)
{
    m_tasks.push_back(Task{name});
    m_lastPermille = -1;
    draw(true);
}

void TerminalProgress::setRange(long long min, long long max)
{
    if (m_tasks.empty())
        return;
    m_tasks.back().min = min;
    m_tasks.back().max = std::max(min, max);
    m_tasks.back().value = min;
    draw(true);
}

void TerminalProgress::report(long long value)
{
    if (m_tasks.empty())
        return;
    m_tasks.back().value = value;
    draw(false);
}

void TerminalProgress::endTask()
{
    if (m_tasks.empty())
        return;
    m_tasks.pop_back();
    m_lastPermille = -1;
    if (m_tasks.empty())
        clearLine();
    else
        draw(true);
}

void TerminalProgress::draw(bool force)
{
    if (!m_enabled || m_tasks.empty())
        return;
    const Task& task = m_tasks.back();
    const long long span = task.max - task.min;
    const double fraction = span > 0 ? std::clamp(double(task.value - task.min) / double(span), 0.0, 1.0) : 0.0;
    const int permille = int(fraction * 1000.0);
    const auto now = std::chrono::steady_clock::now();
    if (!force && (permille == m_lastPermille || now - m_lastDraw < sMinRedraw))
        return;
    m_lastPermille = permille;
    m_lastDraw = now;

    const int filled = int(fraction * sBarWidth);
    std::string bar(std::size_t(filled), '#');
    bar.append(std::size_t(sBarWidth - filled), '-');
    std::fprintf(m_stream, "\r\033[K%s [%s] %5.1f%%", task.name.c_str(), bar.c_str(), fraction * 100.0);
    std::fflush(m_stream);
}

void TerminalProgress::clearLine()
{
    if (!m_enabled)
        return;
    std::fprintf(m_stream, "\r\033[K");
    std::fflush(m_stream);
}

} // namespace util
