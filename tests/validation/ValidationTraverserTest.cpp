#include "TestSupport.h"

#include <datamodel/block/Block.h>
#include <datamodel/model/Band.h>
#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L1Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/model/Validatable.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/validation/BasicValidationTraverser.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <stdexcept>
#include <string>
#include <vector>

using namespace datamodel;

namespace {

using Log = std::vector<std::string>;

// Logs the typed overloads it is called with and then walks on as the base
// traverser does.
class RecordingTraverser : public ValidationTraverser {
public:
    using ValidationTraverser::ValidationTraverser;
    using ValidationTraverser::validate;

    void validate(RecordingSession& session) override
    {
        log.push_back("session");
        ValidationTraverser::validate(session);
    }
    void validate(Block& block) override
    {
        log.push_back("block " + block.name());
        ValidationTraverser::validate(block);
    }
    void validate(Take& take) override
    {
        log.push_back("take " + take.name());
        ValidationTraverser::validate(take);
    }
    void validate(L0Image& image) override
    {
        log.push_back("L0 " + image.bandName());
        ValidationTraverser::validate(image);
    }
    void validate(L1Image& image) override
    {
        log.push_back("L1");
        ValidationTraverser::validate(image);
    }
    void validate(L2Image& image) override
    {
        log.push_back("L2 " + image.filename());
        ValidationTraverser::validate(image);
    }
    void validate(Band& band) override { log.push_back("band " + band.name()); }
    void validate(InfoFile& file) override { log.push_back("info " + file.bandId()); }

    Log log;
};

class TestL1Image : public L1Image {
public:
    using L1Image::L1Image;
    raster::ImageReader& reader() const override { throw std::logic_error("not used"); }
    utzRaster::ImageWriter* createWriter(const utzRaster::ImageGeometry&, bool, ImageType) override
    {
        throw std::logic_error("not used");
    }
    void uncache() override {}
};

class BandedL2Image : public L2Image {
public:
    using L2Image::L2Image;
    void add(Band* band) { addBand(band); }
};

struct Collector : ValidationTraverser::Information, ValidationTraverser::Warning, ValidationTraverser::Error {
    void information(const std::string& m) override { messages.push_back("I: " + m); }
    void warning(const std::string& m) override { messages.push_back("W: " + m); }
    void error(const std::string& m) override { messages.push_back("E: " + m); }
    Log messages;
};

// Reports one message of each kind for every band it meets.
class ReportingTraverser : public ValidationTraverser {
public:
    using ValidationTraverser::ValidationTraverser;
    using ValidationTraverser::validate;
    void validate(Band& band) override
    {
        information("seen " + band.name());
        warning("odd " + band.name());
        error("bad " + band.name());
    }
};

class ValidationWalkTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    L0Image* l0(Take& take, const QByteArray& band)
    {
        const InfoFile info = testsupport::makeInfoFile(dir, "L1_" + QString::fromLatin1(band), band);
        return new L0Image(take, 0, info, "L1" + info.bandId() + ".zel", "", "", "");
    }
    /// A take with two level-0 images and a level-2 image with one band.
    Take* take(TakeManager& manager, const std::string& name)
    {
        auto* t = new Take(manager);
        t->setName(name);
        t->addImage(l0(*t, "PANN00A"));
        t->addImage(l0(*t, "REDF28B"));
        auto* ortho = new BandedL2Image(*t, name + ".tif");
        ortho->add(new Band(*t, *ortho, "ORTHO", 0));
        t->addImage(ortho);
        return t;
    }

    QTemporaryDir dir;
};

Log takeWalk(const std::string& name)
{
    return {"take " + name, "L0 PANN00A", "band PANN00A", "L0 REDF28B", "band REDF28B", "L2 " + name + ".tif",
            "band ORTHO"};
}

Log concat(Log a, const Log& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace

TEST_F(ValidationWalkTest, SessionWalkReachesEveryTakeImageAndBandInOrder)
{
    RecordingSession session(dir.path().toStdString());
    session.addTake(take(session, "L1"));
    session.addTake(nullptr);
    session.addTake(take(session, "L2"));
    RecordingTraverser traverser;

    traverser.traverse(session);

    EXPECT_EQ(traverser.log, concat(concat({"session"}, takeWalk("L1")), takeWalk("L2")));
}

TEST_F(ValidationWalkTest, BlockWalkReachesItsTakes)
{
    Block block;
    block.setDisplayName("north");
    block.addTake(take(block, "S7"));
    RecordingTraverser traverser;

    traverser.traverse(block);

    EXPECT_EQ(traverser.log, concat({"block north"}, takeWalk("S7")));
}

TEST_F(ValidationWalkTest, ObjectsReachedThroughTheirBaseCallTheirOwnOverload)
{
    testsupport::PlainTakeManager manager;
    Take t(manager);
    t.setName("L5");
    L0Image* image = l0(t, "NIRB14A");
    t.addImage(image);
    TestL1Image corrected(t);
    InfoFile info = testsupport::makeInfoFile(dir, "L5_GRNN00A", "GRNN00A");

    const auto visit = [](Validatable& object) {
        RecordingTraverser traverser;
        traverser.traverse(object);
        return traverser.log;
    };

    EXPECT_EQ(visit(t), (Log{"take L5", "L0 NIRB14A", "band NIRB14A"}));
    EXPECT_EQ(visit(*image), (Log{"L0 NIRB14A", "band NIRB14A"}));
    EXPECT_EQ(visit(*image->bands()[0]), (Log{"band NIRB14A"}));
    EXPECT_EQ(visit(corrected), (Log{"L1"}));
    EXPECT_EQ(visit(info), (Log{"info GRNN00A"}));
}

TEST_F(ValidationWalkTest, DescendingIsLeftToTheTraverser)
{
    // A traverser that checks takes but does not walk into them sees no image.
    struct TakesOnly : RecordingTraverser {
        using RecordingTraverser::validate;
        void validate(Take& t) override { log.push_back("take " + t.name()); }
    };
    RecordingSession session(dir.path().toStdString());
    session.addTake(take(session, "L1"));
    TakesOnly traverser;

    traverser.traverse(session);

    EXPECT_EQ(traverser.log, (Log{"session", "take L1"}));
}

TEST_F(ValidationWalkTest, ATakeIsWalkedAsAnImageCollection)
{
    struct CollectionCounter : ValidationTraverser {
        using ValidationTraverser::validate;
        void validate(ImageCollection& collection) override
        {
            names.push_back(collection.name());
            ValidationTraverser::validate(collection);
        }
        Log names;
    };
    RecordingSession session(dir.path().toStdString());
    session.addTake(take(session, "L1"));
    session.addTake(take(session, "L2"));
    CollectionCounter traverser;

    traverser.traverse(session);

    EXPECT_EQ(traverser.names, (Log{session.name(), "L1", "L2"}));
}

TEST_F(ValidationWalkTest, NullImagesAndBandsAreSkipped)
{
    testsupport::PlainTakeManager manager;
    Take t(manager);
    t.setName("L1");
    t.addImage(static_cast<L0Image*>(nullptr));
    t.addImage(l0(t, "PANN00A"));
    t.addImage(static_cast<L2Image*>(nullptr));
    auto* ortho = new BandedL2Image(t, "o.tif");
    ortho->add(nullptr);
    t.addImage(ortho);
    RecordingTraverser traverser;

    traverser.traverse(t);

    EXPECT_EQ(traverser.log, (Log{"take L1", "L0 PANN00A", "band PANN00A", "L2 o.tif"}));
}

TEST_F(ValidationWalkTest, MessagesReachTheCallersSinks)
{
    testsupport::PlainTakeManager manager;
    Take t(manager);
    t.setName("L1");
    t.addImage(l0(t, "PANN00A"));
    Collector sinks;
    ReportingTraverser traverser(&sinks, &sinks, &sinks);

    traverser.traverse(t);
    EXPECT_EQ(sinks.messages, (Log{"I: seen PANN00A", "W: odd PANN00A", "E: bad PANN00A"}));

    // A copy reports to the same sinks.
    sinks.messages.clear();
    ReportingTraverser copy(traverser);
    copy.traverse(t);
    EXPECT_EQ(sinks.messages.size(), 3u);

    // Only the given sinks receive anything; missing ones drop their messages.
    Collector errorsOnly;
    ReportingTraverser partial(nullptr, nullptr, &errorsOnly);
    EXPECT_NO_THROW(partial.traverse(t));
    EXPECT_EQ(errorsOnly.messages, (Log{"E: bad PANN00A"}));
}

TEST_F(ValidationWalkTest, BasicChecksWantThePixelFileAndTheSensorInTheInfoFile)
{
    testsupport::PlainTakeManager manager;
    Take t(manager);
    t.setName("L1");
    L0Image* image = l0(t, "PANN00A");
    t.addImage(image);
    BasicValidationTraverser basic;

    EXPECT_EQ(testsupport::thrownMessage([&] { basic.traverse(*image); }),
              "Can't find image data for band: PANN00A (tried \"L1PANN00A.zel\").");
    testsupport::writeFile(dir, "L1PANN00A.zel", "pixels");
    L0Image present(t, 1, testsupport::makeInfoFile(dir, "L1_REDN00A", "REDN00A"), dir.filePath("L1PANN00A.zel").toStdString(),
                    "", "", "");
    EXPECT_NO_THROW(basic.traverse(present));

    InfoFile unnamed(testsupport::writeFile(dir, "L1_GRNN00A.info", "<band_info><sensor_type>ZEL</sensor_type></band_info>"),
                     InfoFile::STRIPNAMEREGEX);
    EXPECT_EQ(testsupport::thrownMessage([&] { basic.traverse(unnamed); }),
              "The SensorId is empty in: " + unnamed.infoFileName());
}
