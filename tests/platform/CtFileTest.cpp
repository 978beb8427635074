#include "TestSupport.h"

#include <platform/raster/CtFile.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cstring>

using testsupport::thrownMessage;

namespace {

// A CT file by hand: signature, header size, line count, then the values.
QByteArray ctBytes(const char* signature, std::uint32_t headerBytes, std::uint64_t lines,
                   const std::vector<double>& values, qsizetype padding = 0)
{
    QByteArray bytes(4 + 4 + 8, '\0');
    std::memcpy(bytes.data(), signature, 4);
    std::memcpy(bytes.data() + 4, &headerBytes, 4);
    std::memcpy(bytes.data() + 8, &lines, 8);
    bytes.append(QByteArray(padding, '\x7f'));
    for (double value : values)
        bytes.append(reinterpret_cast<const char*>(&value), 8);
    return bytes;
}

} // namespace

TEST(CtFile, RoundTripsAndMatchesTheDocumentedBytes)
{
    QTemporaryDir dir;
    const std::string path = dir.filePath("L001PANN00A.ct").toStdString();
    raster::CtFile::write(path, {3605.8, 3605.80125});
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toHex(' '),
              QByteArray("43 54 30 31 10 00 00 00 02 00 00 00 00 00 00 00 "
                         "9a 99 99 99 99 2b ac 40 d7 a3 70 3d 9a 2b ac 40"));
    const raster::CtFile ct(path);
    EXPECT_EQ(ct.values(), (std::vector<double>{3605.8, 3605.80125}));
    EXPECT_EQ(ct.name(), path);

    // A longer header (room for later fields) is skipped; no lines is a file too.
    const std::string longer = testsupport::writeFile(dir, "longer.ct", ctBytes("CT01", 24, 1, {7.5}, 8));
    EXPECT_EQ(raster::CtFile(longer).values(), std::vector<double>{7.5});
    const std::string none = testsupport::writeFile(dir, "none.ct", ctBytes("CT01", 16, 0, {}));
    EXPECT_EQ(raster::CtFile(none).size(), 0u);
}

TEST(CtFile, BrokenFilesSayWhatIsWrong)
{
    QTemporaryDir dir;
    auto message = [&](const char* name, const QByteArray& bytes) {
        const std::string path = testsupport::writeFile(dir, QString::fromLatin1(name), bytes);
        return thrownMessage([&] { raster::CtFile{path}; });
    };
    const std::string root = dir.path().toStdString() + "/";
    EXPECT_EQ(thrownMessage([&] { raster::CtFile{root + "missing.ct"}; }), "Can't open CT file: " + root + "missing.ct");
    EXPECT_EQ(message("empty.ct", {}), "CT file is empty: " + root + "empty.ct");
    EXPECT_EQ(message("short.ct", QByteArray("CT01\x10\0\0\0", 8)),
              "CT file is truncated: " + root + "short.ct (8 bytes, the header alone takes 16)");
    EXPECT_EQ(message("cut.ct", ctBytes("CT01", 16, 3, {1.0, 2.0})),
              "CT file is truncated: " + root + "cut.ct (3 scan lines need 16 + 8 x 3 bytes, the file has 32)");
    EXPECT_EQ(message("huge.ct", ctBytes("CT01", 16, ~0ull, {1.0})),
              "CT file holds 18446744073709551615 scan lines, more than a band can (at most 67108864): " + root
                  + "huge.ct");
    EXPECT_EQ(message("long.ct", ctBytes("CT01", 16, 1, {1.0, 2.0})),
              "CT file is longer than its scan lines: " + root + "long.ct (1 scan lines need 16 + 8 x 1 bytes, the "
                  "file has 32)");
    EXPECT_EQ(message("magic.ct", ctBytes("CT02", 16, 1, {1.0})),
              "Not a CT file (no CT01 signature): " + root + "magic.ct");
    EXPECT_EQ(message("header.ct", ctBytes("CT01", 8, 1, {1.0})),
              "CT file has an invalid header size: " + root + "header.ct (8 bytes, at least 16 expected)");
    const std::string unwritable = root + "no/such/dir/x.ct";
    EXPECT_EQ(thrownMessage([&] { raster::CtFile::write(unwritable, {1.0}); }), "Can't write CT file: " + unwritable + " (No such file or directory)");
}
