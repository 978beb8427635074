#include <flightsim/TimeMarkWriter.h>

#include <flightsim/AtomicFile.h>
#include <flightsim/LittleEndian.h>
#include <flightsim/Random.h>

#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace flightsim {

TimeMarkWriter::TimeMarkWriter(const SimulationConfig& config, const FlightPlan& plan, const CameraClock& clock,
                               const GpsTime& start)
    : m_config(config)
    , m_plan(plan)
    , m_clock(clock)
    , m_start(start)
{
}

TimeMarkWriter::Result TimeMarkWriter::write(const QString& path) const
{
    // Marks at whole GPS seconds, counted on from the start of the flight's first week.
    const double startSec = m_start.secondsOfWeek;
    const long long first = (long long)std::ceil(startSec);
    const long long lastMark = (long long)std::floor(startSec + m_plan.durationSec());
    std::vector<Mark> marks;
    for (long long m = first; m <= lastMark; ++m) {
        const double flightSec = double(m) - startSec;
        marks.push_back({GpsTime::wrap(double(m)), m_clock.ctAt(flightSec), flightSec});
    }
    const int count = int(marks.size());

    const TakeWindow& take = m_plan.takes()[std::size_t(m_config.faultTakeIndex())];
    auto nearest = [&](double flightSec) {
        int best = 0;
        for (int i = 0; i < count; ++i)
            if (std::abs(marks[std::size_t(i)].flightSec - flightSec) < std::abs(marks[std::size_t(best)].flightSec - flightSec))
                best = i;
        return best;
    };
    const bool gap = m_config.faults.has(Fault::TmGap);
    const bool jitter = m_config.faults.has(Fault::TmJitter);
    if ((gap || jitter) && count < 10)
        throw ConfigError("the flight of " + std::to_string(m_plan.durationSec())
                          + " s is too short for the time-mark faults: they need at least 10 time marks");

    Result result;
    // The gap: marks centre-1 .. centre+1 go; the first two steps of the file stay regular.
    const int centre = std::clamp(nearest(0.5 * (take.startSec + take.lastLineSec())), 3, count - 4);
    int jitterStart = std::clamp(nearest(take.startSec), 2, count - 3);
    if (gap)
        jitterStart = std::min(centre + 3, count - 3);
    if (jitter) {
        Random random(streamSeed(m_config.seed, RandomStream::TimeMarkJitter));
        QJsonArray records;
        const int end = std::min(jitterStart + sJitterMarks, count - 2);
        for (int i = jitterStart; i < end; ++i) {
            const double offsetSec = random.uniform(0.006, 0.015) * (random.uniform() < 0.5 ? -1.0 : 1.0);
            marks[std::size_t(i)].ctSec += offsetSec;
            const int fileIndex = gap && i > centre ? i - sGapMarks : i;
            records.append(QJsonObject{{QStringLiteral("record"), fileIndex},
                                       {QStringLiteral("gpsSec"), marks[std::size_t(i)].gpsSec},
                                       {QStringLiteral("ctSec"), marks[std::size_t(i)].ctSec},
                                       {QStringLiteral("offsetMs"), offsetSec * 1000.0}});
        }
        result.faults.append(QJsonObject{{QStringLiteral("name"), FaultSet::name(Fault::TmJitter)},
                                         {QStringLiteral("take"), take.label},
                                         {QStringLiteral("records"), records}});
    }
    if (gap) {
        const Mark before = marks[std::size_t(centre - 2)];
        const Mark after = marks[std::size_t(centre + 2)];
        marks.erase(marks.begin() + (centre - 1), marks.begin() + (centre + 2));
        result.faults.append(QJsonObject{{QStringLiteral("name"), FaultSet::name(Fault::TmGap)},
                                         {QStringLiteral("take"), take.label},
                                         {QStringLiteral("missingMarks"), sGapMarks},
                                         {QStringLiteral("recordAfterGap"), centre - 1},
                                         {QStringLiteral("gpsBeforeGapSec"), before.gpsSec},
                                         {QStringLiteral("gpsAfterGapSec"), after.gpsSec},
                                         {QStringLiteral("ctBeforeGapSec"), before.ctSec},
                                         {QStringLiteral("ctAfterGapSec"), after.ctSec}});
    }

    QByteArray bytes(qsizetype(marks.size() * 16), Qt::Uninitialized);
    auto* out = reinterpret_cast<unsigned char*>(bytes.data());
    for (std::size_t i = 0; i < marks.size(); ++i) {
        le::putF64(out + 16 * i, marks[i].gpsSec);
        le::putF64(out + 16 * i + 8, marks[i].ctSec);
    }
    AtomicFile::writeWhole(path, bytes);
    result.marks = std::move(marks);
    return result;
}

} // namespace flightsim
