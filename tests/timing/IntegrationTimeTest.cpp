#include "TestSupport.h"

#include <datamodel/timing/IntegrationTimeZelV1.h>
#include <datamodel/timing/IntegrationTimeZelV2.h>
#include <datamodel/timing/TdiDataZelV1.h>
#include <datamodel/timing/TdiDataZelV2.h>

#include <gtest/gtest.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>
#include <string>

using namespace datamodel;
using testsupport::scanLineRecords;
using testsupport::thrownMessage;

namespace {

class TimingTest : public testsupport::FileTest {
protected:

    /// A fresh "Image" element.
    QDomElement element() { return document.createElement(QStringLiteral("Image")); }

    QDomDocument document;
};

double secondsOf(Seconds value)
{
    return value.value();
}

} // namespace

// ---- Constant integration time ------------------------------------------------------

TEST_F(TimingTest, ConstantIntegrationTimeHoldsOnEveryLine)
{
    IntegrationTimeZelV1 it(seconds(0.0052));
    EXPECT_TRUE(it.isValid());
    EXPECT_FLOAT_EQ(float(secondsOf(it.value())), 0.0052f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value(0.0))), 0.0052f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value(123456.5))), 0.0052f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.nominalValue())), 0.0052f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.minValue())), 0.0052f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.maxValue())), 0.0052f);
    EXPECT_EQ(it.fileName(), "");

    const std::unique_ptr<IntegrationTime> copy(it.copy());
    EXPECT_NE(dynamic_cast<IntegrationTimeZelV1*>(copy.get()), nullptr);
    EXPECT_FLOAT_EQ(float(secondsOf(copy->value())), 0.0052f);
}

TEST_F(TimingTest, ConstantIntegrationTimeAttributeIsMillisecondsWithThreeDecimals)
{
    const struct {
        double valueSec;
        const char* expected;
    } cases[] = {{0.0052, "5.200"}, {0.005, "5.000"}, {0.0123456, "12.346"}, {0.0005, "0.500"}, {1.5, "1500.000"}};
    for (const auto& c : cases) {
        QDomElement image = element();
        IntegrationTimeZelV1(seconds(c.valueSec)).addXmlAttribute(image);
        EXPECT_EQ(image.attribute("it"), c.expected) << c.valueSec;
    }
}

TEST_F(TimingTest, ConstantIntegrationTimeNotAboveZeroIsInvalid)
{
    for (const double valueSec : {0.0, -1.0, -0.004}) {
        IntegrationTimeZelV1 it(seconds(valueSec));
        EXPECT_FALSE(it.isValid()) << valueSec;
        QDomElement image = element();
        it.addXmlAttribute(image);
        EXPECT_FALSE(image.hasAttribute("it")) << valueSec;
    }
}

TEST_F(TimingTest, ConstantIntegrationTimeWritesNoFile)
{
    IntegrationTimeZelV1 it(seconds(0.0052));
    EXPECT_FALSE(it.write(path("band.it")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("band.it")));
    EXPECT_EQ(it.fileName(), "");
}

// ---- Integration times from a file ---------------------------------------------------

TEST_F(TimingTest, FileIntegrationTimeReadsItsFile)
{
    const std::string file = write("band.it", scanLineRecords({{0, 1000}, {100, 1500}, {10000, 3000}}));
    IntegrationTimeZelV2 it(file);
    EXPECT_TRUE(it.isValid());
    EXPECT_EQ(it.fileName(), file);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value(0.0))), 0.001f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value(99.0))), 0.001f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value(100.0))), 0.0015f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value(20000.0))), 0.003f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.minValue())), 0.001f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.maxValue())), 0.003f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.nominalValue())), 0.0015f);
    EXPECT_FLOAT_EQ(float(secondsOf(it.value())), 0.0015f) << "the band's value is the nominal one";
    EXPECT_EQ(it.data().values().size(), 5u);  // lines 0, 99, 100, 9999, 10000

    const std::unique_ptr<IntegrationTime> copy(it.copy());
    EXPECT_EQ(copy->fileName(), file);
    EXPECT_FLOAT_EQ(float(secondsOf(copy->value(100.0))), 0.0015f);
}

TEST_F(TimingTest, FileIntegrationTimeIsInvalidWithoutAReadableFile)
{
    EXPECT_FALSE(IntegrationTimeZelV2("").isValid());
    EXPECT_FALSE(IntegrationTimeZelV2(path("missing.it")).isValid());
    EXPECT_FALSE(IntegrationTimeZelV2(write("odd.it", QByteArray(12, '\0'))).isValid());

    // The file is read on first use, not on construction.
    const IntegrationTimeZelV2 lazy(path("later.it"));
    write("later.it", scanLineRecords({{0, 2000}}));
    EXPECT_TRUE(lazy.isValid());
    EXPECT_FLOAT_EQ(float(secondsOf(lazy.value())), 0.002f);

    const IntegrationTimeZelV2 missing(path("missing.it"));
    EXPECT_EQ(thrownMessage([&] { missing.value(); }), "Can't open file: " + path("missing.it"));
}

TEST_F(TimingTest, FileIntegrationTimeAttributeIsTheBareFileName)
{
    QDomElement image = element();
    IntegrationTimeZelV2(path("L1PANN00A.it")).addXmlAttribute(image);
    EXPECT_EQ(image.attribute("it"), "L1PANN00A.it");
}

TEST_F(TimingTest, FileIntegrationTimeWritesItsValuesToANewFile)
{
    const QByteArray records = scanLineRecords({{0, 5200}, {700, 5400}, {701, 5100}, {3000, 5200}});
    IntegrationTimeZelV2 it(write("band.it", records));
    ASSERT_TRUE(it.write(path("copy.it")));
    EXPECT_EQ(bytesOf(path("copy.it")), records);
    EXPECT_EQ(it.fileName(), path("copy.it"));
    QDomElement image = element();
    it.addXmlAttribute(image);
    EXPECT_EQ(image.attribute("it"), "copy.it");

    // A failed write keeps the file.
    const std::string unwritable = path("no/such/folder/band.it");
    EXPECT_EQ(thrownMessage([&] { it.write(unwritable); }), "Can't open file for writing: " + unwritable);
    EXPECT_EQ(it.fileName(), path("copy.it"));
}

// ---- TDI stages -------------------------------------------------------------------------

TEST_F(TimingTest, OneTdiStageThroughout)
{
    TdiDataZelV1 tdi;
    EXPECT_EQ(tdi.value(), 1.0f);
    EXPECT_EQ(tdi.value(5000.0f), 1.0f);
    EXPECT_EQ(tdi.minValue(), 1.0f);
    EXPECT_EQ(tdi.maxValue(), 1.0f);
    EXPECT_EQ(tdi.fileName(), "");

    QDomElement image = element();
    tdi.addXmlAttribute(image);
    EXPECT_EQ(image.attributes().count(), 0);
    EXPECT_FALSE(tdi.write(path("band.tdi")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("band.tdi")));
}

TEST_F(TimingTest, TdiStagesFromAFile)
{
    const QByteArray records = scanLineRecords({{0, 1}, {100, 4}, {1000, 2}});
    TdiDataZelV2 tdi(write("band.tdi", records));
    EXPECT_EQ(tdi.value(50.0f), 1.0f);
    EXPECT_EQ(tdi.value(99.5f), 1.0f);
    EXPECT_EQ(tdi.value(100.0f), 4.0f);
    EXPECT_EQ(tdi.value(999.0f), 4.0f);
    EXPECT_EQ(tdi.value(5000.0f), 2.0f);
    EXPECT_EQ(tdi.minValue(), 1.0f);
    EXPECT_EQ(tdi.maxValue(), 4.0f);
    EXPECT_EQ(tdi.value(), 4.0f) << "the stage count in force over most lines";

    QDomElement image = element();
    tdi.addXmlAttribute(image);
    EXPECT_EQ(image.attribute("tdi"), "band.tdi");

    ASSERT_TRUE(tdi.write(path("copy.tdi")));
    EXPECT_EQ(bytesOf(path("copy.tdi")), records);
    EXPECT_EQ(tdi.fileName(), path("copy.tdi"));

    const TdiDataZelV2 missing(path("missing.tdi"));
    EXPECT_EQ(thrownMessage([&] { missing.value(); }), "Can't open file: " + path("missing.tdi"));
}
