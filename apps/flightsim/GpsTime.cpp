#include <flightsim/GpsTime.h>

#include <QDate>
#include <QTime>

#include <cmath>
#include <stdexcept>

namespace flightsim {

namespace {

const QDateTime& gpsEpoch()
{
    static const QDateTime epoch(QDate(1980, 1, 6), QTime(0, 0), Qt::UTC);
    return epoch;
}

struct LeapSecond {
    int year, month, day, gpsMinusUtc;
};

// The dates from which GPS − UTC took each value.
constexpr LeapSecond sLeapSeconds[] = {
    {1981, 7, 1, 1},  {1982, 7, 1, 2},  {1983, 7, 1, 3},  {1985, 7, 1, 4},  {1988, 1, 1, 5},
    {1990, 1, 1, 6},  {1991, 1, 1, 7},  {1992, 7, 1, 8},  {1993, 7, 1, 9},  {1994, 7, 1, 10},
    {1996, 1, 1, 11}, {1997, 7, 1, 12}, {1999, 1, 1, 13}, {2006, 1, 1, 14}, {2009, 1, 1, 15},
    {2012, 7, 1, 16}, {2015, 7, 1, 17}, {2017, 1, 1, 18},
};

} // namespace

int GpsTime::leapSeconds(const QDateTime& utc)
{
    int value = 0;
    const QDate date = utc.toUTC().date();
    for (const LeapSecond& leap : sLeapSeconds)
        if (date >= QDate(leap.year, leap.month, leap.day))
            value = leap.gpsMinusUtc;
    return value;
}

GpsTime GpsTime::fromUtc(const QDateTime& utc)
{
    const qint64 msSinceEpoch = gpsEpoch().msecsTo(utc);
    if (!utc.isValid() || msSinceEpoch < 0)
        throw std::runtime_error("GPS time is not defined before 1980-01-06: "
                                 + utc.toUTC().toString(Qt::ISODate).toStdString());
    const double total = double(msSinceEpoch) / 1000.0 + leapSeconds(utc);
    GpsTime time;
    time.week = int(std::floor(total / sSecondsPerWeek));
    time.secondsOfWeek = total - time.week * sSecondsPerWeek;
    return time;
}

GpsTime GpsTime::plus(double seconds) const
{
    const double total = sinceEpochSec() + seconds;
    GpsTime time;
    time.week = int(std::floor(total / sSecondsPerWeek));
    time.secondsOfWeek = total - time.week * sSecondsPerWeek;
    return time;
}

QDateTime GpsTime::toUtc() const
{
    const qint64 ms = std::llround(sinceEpochSec() * 1000.0);
    const QDateTime approximate = gpsEpoch().addMSecs(ms);
    return approximate.addSecs(-leapSeconds(approximate.addSecs(-18)));
}

} // namespace flightsim
