#include "TestSupport.h"

#include <platform/sensor/EOPData.h>

#include <gtest/gtest.h>

#include <Eigen/Geometry>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <cstring>
#include <limits>
#include <unistd.h>

using sensor::EOP;
using sensor::EOPData;
using sensor::EOPStdDevs;
using testsupport::thrownMessage;

namespace {

EOP sample(double time, double x, std::array<float, 4> q = {1.0f, 0.0f, 0.0f, 0.0f})
{
    EOP eop;
    eop.time = time;
    eop.q = q;
    eop.x = x;
    eop.y = -2.0 * x;
    eop.z = 1000.0 + x;
    return eop;
}

/// A unit quaternion of `angleRad` about the axis (1, 2, 3).
std::array<float, 4> turn(double angleRad)
{
    const Eigen::Quaterniond q(Eigen::AngleAxisd(angleRad, Eigen::Vector3d(1, 2, 3).normalized()));
    return {float(q.w()), float(q.x()), float(q.y()), float(q.z())};
}

/// Every field of both containers, compared bit for bit.
void expectSameBits(const EOPData& a, const EOPData& b)
{
    ASSERT_EQ(a.size(), b.size());
    ASSERT_EQ(a.hasStdDevs(), b.hasStdDevs());
    EXPECT_EQ(std::memcmp(&a.anchorPoint(), &b.anchorPoint(), sizeof(geo::XYZPoint)), 0);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(a.frequency()), std::bit_cast<std::uint64_t>(b.frequency()));
    EXPECT_EQ(a.absTime(), b.absTime());
    EXPECT_EQ(a.posSource() + "|" + a.tmSource() + "|" + a.appSource(),
              b.posSource() + "|" + b.tmSource() + "|" + b.appSource());
    for (int i = 0; i < a.size(); ++i) {
        EOP x, y;
        EOPStdDevs sx{}, sy{};
        ASSERT_EQ(a.atIndex(i, x) + b.atIndex(i, y), 0);
        EXPECT_TRUE(x.time == y.time && x.flags == y.flags && x.q == y.q) << "sample " << i;
        EXPECT_EQ(std::memcmp(&x.x, &y.x, 8) | std::memcmp(&x.y, &y.y, 8) | std::memcmp(&x.z, &y.z, 8), 0);
        EXPECT_EQ(a.stdDevAtIndex(i, sx), b.stdDevAtIndex(i, sy));
        EXPECT_EQ(std::memcmp(sx.data(), sy.data(), sizeof sx), 0) << "sample " << i;
    }
}

/// The file tests, in a temporary folder of their own.
class EopDataFile : public testsupport::FileTest {};

} // namespace

TEST_F(EopDataFile, FilesReadBackBitForBitInTheDocumentedLayout)
{
    const std::string tiny = path("tiny.eop");
    EOPData one("", true, false);
    one.setAnchorPoint({0.25, 0.75, 0.0});
    one.setFrequency(200.0);
    one.setAppSource("eop");
    one.append(sample(0.5, 1.5));
    one.write(tiny);
    EXPECT_EQ(one.fileName(), tiny);
    EXPECT_EQ(bytesOf(tiny).toHex(' '),
              "45 4f 50 44 41 54 41 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 d0 3f 00 00 00 00 00 00 e8 3f "
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 69 40 00 00 00 00 00 00 00 00 00 00 00 00 03 00 00 00 "
              "65 6f 70 01 00 00 00 00 00 00 00 00 00 00 00 00 00 e0 3f 00 00 00 00 00 00 80 3f 00 00 00 00 00 "
              "00 00 00 00 00 00 00 00 00 00 00 00 00 f8 3f 00 00 00 00 00 00 08 c0 00 00 00 00 00 4c 8f 40");

    // Awkward values, non-ASCII and long texts and flags survive; so do a
    // container without standard deviations and an empty one, whatever the
    // reader is told about standard deviations.
    EOPData full("", false, true);
    EOPData bare("", false, false);
    full.setAnchorPoint({-0.0, std::nextafter(1.0, 2.0), -12.345678901234567});
    full.setFrequency(1.0 / 3.0);
    full.setAbsTime(604800u * 1042u);
    full.setPosSource("/flights/Höhe/sbet_0001.out");
    full.setTmSource("Times from CTG files");
    full.setAppSource(std::string(65536, 'a'));
    for (int i = 0; i < 3000; ++i) {
        EOP eop = sample(345600.0 + i * 0.005 + 1e-9 * i, std::ldexp(1.0, -1074 + i % 40), turn(0.001 * i));
        eop.flags = i % 3 - 1;
        full.append(eop, {0.01 * i, -0.0, 1e-300, 0.1, 0.2, 0.3});
        bare.append(eop);
    }
    const EOPData empty("", false, false);
    int n = 0;
    for (const EOPData* original : std::initializer_list<const EOPData*>{&full, &bare, &empty}) {
        const std::string target = path(QString("take%1.eop").arg(n++));
        EOPData(*original).write(target);
        const EOPData read(target, true, !original->hasStdDevs());
        expectSameBits(*original, read);
        EXPECT_EQ(read.fileName(), target);
        EOPData(read).write(target + ".again");
        EXPECT_EQ(bytesOf(target), bytesOf(target + ".again"));
    }
}

TEST_F(EopDataFile, BrokenFilesAreRefusedNamingTheFile)
{
    // Three samples with standard deviations behind a 74-byte header (the
    // position source "ok"): samples at 74 + 52 i, deviations at 230 + 48 i.
    EOPData good("", false, true);
    good.setPosSource("ok");
    for (int i = 0; i < 3; ++i)
        good.append(sample(10.0 + 0.005 * i, i), {0.1, 0.1, 0.1, 0.01, 0.01, 0.01});
    const std::string goodPath = path("good.eop");
    good.write(goodPath);
    const QByteArray bytes = bytesOf(goodPath);
    ASSERT_EQ(bytes.size(), 374);
    auto with = [&](qsizetype offset, auto value) {
        QByteArray changed = bytes;
        std::memcpy(changed.data() + offset, &value, sizeof value);
        return changed;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::string sizes = " with standard deviations need 74 + 100 x ";
    const struct {
        QByteArray content;
        std::string message; // the path goes where the first '@' is
    } cases[] = {
        {{}, "EOP file is empty: @"},
        {"EOP file\n", "Not an EOP file (no EOPDATA signature): @"},
        {with(8, std::uint32_t(2)), "Unsupported EOP file: @ (version 2, this program reads version 1)"},
        {bytes.left(40), "EOP file is truncated: @ (the header takes 56 bytes at least, the file has 40)"},
        {with(66, ~std::uint64_t(0)),
         "EOP file is truncated: @ (18446744073709551615 samples" + sizes + "18446744073709551615 bytes, the file has 374)"},
        {bytes.chopped(1), "EOP file is truncated: @ (3 samples" + sizes + "3 bytes, the file has 373)"},
        {bytes + "x", "EOP file is longer than its samples: @ (3 samples" + sizes + "3 bytes, the file has 375)"},
        {with(16, inf), "Invalid EOP file: @ (the anchor's longitude is not a finite number (inf))"},
        {with(12, std::uint32_t(5)), "Invalid EOP file: @ (the absolute time 5 s is no whole number of GPS weeks (604800 s))"},
        {with(48, std::uint32_t(2)), "Invalid EOP file: @ (the standard-deviation flag is 2, not 0 or 1)"},
        {with(52, std::uint32_t(70000)), "Invalid EOP file: @ (the position source text is 70000 bytes long, more than 65536)"},
        {with(56, '\xff'), "Invalid EOP file: @ (the position source text is not UTF-8)"},
        {with(74 + 52 + 28, nan), "Invalid EOP file: @ (sample 1: x is not a finite number (nan))"},
        {with(74 + 104, 10.005), "Invalid EOP file: @ (sample 2: its time 10.005 s does not come after the time before, 10.005 s)"},
        {with(74 + 12, 0.5f), "Invalid EOP file: @ (sample 0: its attitude quaternion has the length 0.5, not 1)"},
        {with(230 + 48 + 8, inf), "Invalid EOP file: @ (sample 1: the y standard deviation is not a finite number (inf))"},
    };
    int n = 0;
    for (const auto& bad : cases) {
        const std::string file = write(QString("bad%1.eop").arg(n++), bad.content);
        std::string expected = bad.message;
        expected.replace(expected.find('@'), 1, file);
        EXPECT_EQ(thrownMessage([&] { EOPData(file, true, true); }), expected);
        EXPECT_THROW(EOPData(file, true, true), util::InvalidFileError);
    }
    const std::string missing = path("missing.eop");
    EXPECT_EQ(thrownMessage([&] { EOPData(missing, true, true); }), "Can't open EOP file: " + missing + " (no such file)");
    EXPECT_EQ(thrownMessage([&] { EOPData(dir.path().toStdString(), true, true); }),
              "Can't open EOP file: " + dir.path().toStdString() + " (a folder, not a file)");
}

TEST_F(EopDataFile, AFailedWriteLeavesTheOldFile)
{
    const std::string target = path("take.eop");
    EOPData data("", false, false);
    data.append(sample(1.0, 0.0));
    data.append(sample(2.0, 1.0));
    data.write(target);
    const QByteArray old = bytesOf(target);

    // What the reader would refuse is never written.
    data.append(sample(2.0, 5.0));
    EXPECT_EQ(thrownMessage([&] { data.write(target); }),
              "Can't write EOP file: " + target + " (sample 2: its time 2 s does not come after the time before, 2 s)");
    data.setRecord(2, sample(3.0, 5.0));
    EXPECT_EQ(thrownMessage([&] { data.write(target, 1); }),
              "Can't write EOP file: " + target + " (format 1 is unknown; 0 is the only format)");
    const std::string nowhere = path("no/such/take.eop");
    EXPECT_EQ(thrownMessage([&] { data.write(nowhere); }), "Can't write EOP file: " + nowhere + " (No such file or directory)");
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder.eop"));
    const std::string folder = path("folder.eop");
    EXPECT_EQ(thrownMessage([&] { data.write(folder); }), "Can't write EOP file: " + folder + " (Is a directory)");
    EXPECT_EQ(bytesOf(target), old);
    EXPECT_EQ(data.fileName(), target);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"take.eop"});

    // A folder the writer may not write in (root may write anywhere).
    if (::geteuid() != 0) {
        ASSERT_TRUE(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner));
        EXPECT_EQ(thrownMessage([&] { data.write(target); }), "Can't write EOP file: " + target + " (Permission denied)");
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        EXPECT_EQ(bytesOf(target), old);
    }
}

TEST(EopData, ReadsAndWritesBySampleFollowThePlatformsReturnConventions)
{
    // Not loaded: nothing is read, not even a file that is not there.
    EOPData data("never-read.eop", false, true);
    EXPECT_EQ(data.size(), 0);
    EXPECT_TRUE(data.hasStdDevs());
    EXPECT_EQ(data.fileName(), "never-read.eop");
    EOP eop;
    EOPStdDevs stdDevs{};
    EXPECT_NE(data.atIndex(0, eop), 0);
    EXPECT_NE(data.atGPS(util::seconds(0.0), eop), 0);
    EXPECT_NE(data.stdDevAtGPS(util::seconds(0.0), stdDevs), 0);

    data.append(sample(10.0, 0.0), {1, 1, 1, 1, 1, 1});
    data.append(sample(11.0, 1.0), {3, 3, 3, 3, 3, 5});
    EXPECT_EQ(data.atIndex(1, eop), 0);
    EXPECT_EQ(eop.x, 1.0);
    EXPECT_NE(data.atIndex(-1, eop) * data.atIndex(2, eop), 0);
    EXPECT_TRUE(data.setRecord(1, sample(12.0, 2.0)));
    EXPECT_FALSE(data.setRecord(2, eop) || data.setRecord(-1, eop));
    EXPECT_NE(data.stdDevAtIndex(2, stdDevs), 0);
    EXPECT_FALSE(data.setStdDevs(2, stdDevs));
    EXPECT_EQ(data.stdDevAtGPS(util::seconds(11.0), stdDevs), 0);
    EXPECT_EQ(stdDevs, (EOPStdDevs{2, 2, 2, 2, 2, 3}));
    EXPECT_NE(data.stdDevAtGPS(util::seconds(12.5), stdDevs), 0);

    // Without standard deviations until some are set; an empty name reads nothing.
    EOPData none("", true, false);
    none.append(sample(1.0, 0.0), {9, 9, 9, 9, 9, 9});
    none.append(sample(2.0, 0.0));
    EXPECT_NE(none.stdDevAtIndex(0, stdDevs), 0);
    EXPECT_NE(none.stdDevAtGPS(util::seconds(1.0), stdDevs), 0);
    EXPECT_TRUE(none.setStdDevs(1, {4, 4, 4, 4, 4, 4}));
    EXPECT_TRUE(none.hasStdDevs());
    EXPECT_EQ(none.stdDevAtIndex(0, stdDevs), 0);
    EXPECT_EQ(stdDevs, EOPStdDevs{});
    none.setDefaultStdDevs({7, 7, 7, 7, 7, 7});
    EXPECT_EQ(none.stdDevAtIndex(1, stdDevs), 0);
    EXPECT_EQ(stdDevs[5], 7.0);
}

TEST(EopData, AtGpsInterpolatesPositionLinearlyAndAttitudeTheShorterWay)
{
    // Unevenly spaced samples whose attitudes differ by small and large
    // angles about changing axes; every other quaternion is stored negated
    // (the same rotation), and samples 200 and 201 differ by 1e-5 rad.
    auto rotation = [](int i) {
        const Eigen::Vector3d axis = Eigen::Vector3d(1.0, std::cos(i), std::sin(0.5 * i)).normalized();
        return Eigen::Quaterniond(Eigen::AngleAxisd(0.6 * i, axis));
    };
    EOPData data("", false, false);
    std::vector<double> times;
    for (int i = 0; i < 500; ++i) {
        times.push_back(3000.0 + 0.005 * i + 0.001 * std::sin(i));
        const Eigen::Quaterniond tiny(Eigen::AngleAxisd(1e-5, Eigen::Vector3d::UnitX()));
        const Eigen::Quaternionf q = (i == 201 ? rotation(200) * tiny : rotation(i)).cast<float>();
        const float sign = i % 2 ? -1.0f : 1.0f;
        data.append(sample(times.back(), 0.37 * i * i, {sign * q.w(), sign * q.x(), sign * q.y(), sign * q.z()}));
    }
    EOP eop;
    EOP before;
    EOP after;
    for (int k = 0; k + 1 < data.size(); ++k) {
        data.atIndex(k, before);
        data.atIndex(k + 1, after);
        const Eigen::Quaterniond from(before.q[0], before.q[1], before.q[2], before.q[3]);
        const Eigen::Quaterniond to(after.q[0], after.q[1], after.q[2], after.q[3]);
        for (double fraction : {0.125, 0.5, 0.875}) {
            const double time = before.time + fraction * (after.time - before.time);
            ASSERT_EQ(data.atGPS(util::seconds(time), eop), 0) << time;
            const double f = (time - before.time) / (after.time - before.time);
            EXPECT_EQ(eop.time, time);
            EXPECT_NEAR(eop.x, before.x + f * (after.x - before.x), 1e-9 * std::abs(after.x) + 1e-12);
            EXPECT_NEAR(eop.z, before.z + f * (after.z - before.z), 1e-9 * std::abs(after.z));
            const Eigen::Quaterniond got(eop.q[0], eop.q[1], eop.q[2], eop.q[3]);
            EXPECT_LT((got.coeffs() - from.slerp(f, to).normalized().coeffs()).norm(), 1e-6)
                << "between samples " << k << " and " << k + 1;
            EXPECT_NEAR(got.norm(), 1.0, 1e-6);
        }
    }

    // On a sample: that sample, bit for bit; outside the samples: non-zero.
    for (int i : {0, 1, 250, 499}) {
        data.atIndex(i, before);
        ASSERT_EQ(data.atGPS(util::seconds(before.time), eop), 0);
        EXPECT_TRUE(eop.time == before.time && eop.q == before.q && eop.x == before.x && eop.z == before.z);
    }
    const EOP untouched = eop;
    for (double outside : {std::nextafter(times.front(), 0.0), std::nextafter(times.back(), 1e9),
                           std::numeric_limits<double>::quiet_NaN()})
        EXPECT_NE(data.atGPS(util::seconds(outside), eop), 0) << outside;
    EXPECT_EQ(eop.x, untouched.x);

    // Times as far apart as doubles go: the step between them does not overflow.
    EOPData wide("", false, false);
    wide.append(sample(-1e308, 0.0));
    wide.append(sample(1.5e308, 5.0));
    ASSERT_EQ(wide.atGPS(util::seconds(0.5e308), eop), 0);
    EXPECT_DOUBLE_EQ(eop.x, 3.0);
}
