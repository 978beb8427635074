#include "TestSupport.h"

#include <datamodel/block/Block.h>
#include <datamodel/ground/GroundPoint.h>
#include <datamodel/ground/TiePoint.h>
#include <datamodel/model/Band.h>
#include <datamodel/model/Cacheable.h>
#include <datamodel/model/ImageCollection.h>
#include <datamodel/model/ImageInterface.h>
#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L1Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Serializable.h>
#include <datamodel/model/Take.h>
#include <datamodel/model/TakeManager.h>
#include <datamodel/model/Validatable.h>
#include <datamodel/session/RecordingSession.h>

#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <memory>
#include <thread>
#include <type_traits>

using namespace datamodel;
using testsupport::thrownMessage;

namespace {

// ---- Class tree -----------------------------------------------------------

// A base reached only through virtual inheritance cannot be static_cast down
// to the derived class; an ordinary base can.
template <class Base, class Derived>
concept StaticDowncastable = requires(Base* base) { static_cast<Derived*>(base); };

// One unambiguous subobject of Base, shared through virtual inheritance.
template <class Base, class Derived>
constexpr bool sharedVirtualBase = std::is_base_of_v<Base, Derived> && std::is_convertible_v<Derived*, Base*>
    && !StaticDowncastable<Base, Derived>;

static_assert(StaticDowncastable<ImageCollection, Take>, "the detection itself must see ordinary bases");
static_assert(StaticDowncastable<Image, L0Image>);
static_assert(StaticDowncastable<TakeManager, RecordingSession>);
static_assert(StaticDowncastable<TakeManager, Block>);
static_assert(StaticDowncastable<Serializable, Take>);

static_assert(sharedVirtualBase<Validatable, ImageCollection>);
static_assert(sharedVirtualBase<Validatable, Image>);
static_assert(sharedVirtualBase<Cacheable, Image>);
static_assert(sharedVirtualBase<ImageInterface, Image>);
static_assert(sharedVirtualBase<Validatable, L0Image>);
static_assert(sharedVirtualBase<Cacheable, L0Image>);
static_assert(sharedVirtualBase<Validatable, L1Image>);
static_assert(sharedVirtualBase<Validatable, L2Image>);
static_assert(sharedVirtualBase<Cacheable, L2Image>);
static_assert(sharedVirtualBase<Validatable, Take>);
static_assert(sharedVirtualBase<Cacheable, Take>);
static_assert(sharedVirtualBase<Validatable, RecordingSession>);
static_assert(sharedVirtualBase<Validatable, Block>);
static_assert(sharedVirtualBase<Validatable, Band>);
static_assert(sharedVirtualBase<Validatable, InfoFile>);
static_assert(std::is_base_of_v<Serializable, L0Image> && std::is_base_of_v<Serializable, L2Image>
              && std::is_base_of_v<Serializable, Block>);
static_assert(!std::is_base_of_v<Serializable, RecordingSession>);
static_assert(std::has_virtual_destructor_v<TakeManager> && std::has_virtual_destructor_v<GroundPoint>);

// ---- Instrumented subclasses ----------------------------------------------

class CountedBand : public Band {
public:
    CountedBand(Take& take, Image& image, const std::string& name, int& deaths)
        : Band(take, image, name, 0)
        , m_deaths(deaths)
    {
    }
    ~CountedBand() override { ++m_deaths; }

private:
    int& m_deaths;
};

class CountedL0Image : public L0Image {
public:
    CountedL0Image(Take& take, const InfoFile& info, const std::string& file, int& deaths)
        : L0Image(take, 0, info, file, "", "", "")
        , m_deaths(deaths)
    {
    }
    ~CountedL0Image() override { ++m_deaths; }

private:
    int& m_deaths;
};

// A level-2 image that lets the test add bands.
class CountedL2Image : public L2Image {
public:
    CountedL2Image(Take& take, int& deaths)
        : L2Image(take, "ortho.tif")
        , m_deaths(deaths)
    {
    }
    ~CountedL2Image() override { ++m_deaths; }
    void add(Band* band) { addBand(band); }

private:
    int& m_deaths;
};

class CountedTake : public Take {
public:
    CountedTake(TakeManager& manager, int& deaths)
        : Take(manager)
        , m_deaths(deaths)
    {
    }
    ~CountedTake() override { ++m_deaths; }

private:
    int& m_deaths;
};

class CountedTiePoint : public TiePoint {
public:
    CountedTiePoint(const std::string& id, const geo::coordSys& system, int& deaths)
        : TiePoint(id, system, 1.0, 2.0, 3.0, 0.1, 0.1, 0.1)
        , m_deaths(deaths)
    {
    }
    ~CountedTiePoint() override { ++m_deaths; }

private:
    int& m_deaths;
};

class ModelTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    /// A level-0 image whose pixel file has the given base name.
    L0Image* l0(Take& take, const QString& pixelBase, int& deaths, const QByteArray& band = "PANF28A")
    {
        const InfoFile info = testsupport::makeInfoFile(dir, QStringLiteral("L12_") + QString::fromLatin1(band), band);
        return new CountedL0Image(take, info, dir.filePath(pixelBase + QStringLiteral(".zel")).toStdString(), deaths);
    }
    L0Image* l0(Take& take, const QString& pixelBase, const QByteArray& band = "PANF28A")
    {
        return l0(take, pixelBase, m_ignored, band);
    }

    QTemporaryDir dir;
    testsupport::PlainTakeManager manager;
    std::unique_ptr<geo::coordSys> geographic = geo::coordSysFactory::getInstance().createGEO84();

private:
    int m_ignored = 0;
};

} // namespace

TEST(ClassTree, EachObjectHasOneValidatableAndCacheablePart)
{
    testsupport::PlainTakeManager manager;
    Take take(manager);
    Take* pointer = &take;

    Validatable* direct = pointer;
    Validatable* viaCollection = static_cast<ImageCollection*>(pointer);
    EXPECT_EQ(direct, viaCollection);
    EXPECT_EQ(dynamic_cast<Validatable*>(pointer), direct);
    EXPECT_EQ(dynamic_cast<Take*>(direct), pointer);
    EXPECT_EQ(dynamic_cast<Take*>(static_cast<Cacheable*>(pointer)), pointer);
    EXPECT_EQ(dynamic_cast<Cacheable*>(direct), static_cast<Cacheable*>(pointer));
}

TEST_F(ModelTest, ImageDeletesItsBandsAndSkipsNullEntries)
{
    Take take(manager);
    int imageDeaths = 0;
    int bandDeaths = 0;
    auto* image = new CountedL2Image(take, imageDeaths);
    image->add(new CountedBand(take, *image, "A", bandDeaths));
    image->add(nullptr);
    image->add(new CountedBand(take, *image, "B", bandDeaths));
    ASSERT_EQ(image->bands().size(), 3u);
    EXPECT_EQ(image->bands()[0]->name(), "A");
    EXPECT_EQ(&image->bands()[0]->image(), image);
    EXPECT_EQ(&image->bands()[0]->take(), &take);

    delete image;
    EXPECT_EQ(imageDeaths, 1);
    EXPECT_EQ(bandDeaths, 2);
}

TEST_F(ModelTest, LevelZeroImageHoldsOneBandNamedAfterTheInfoFile)
{
    Take take(manager);
    std::unique_ptr<L0Image> image(l0(take, "LINE1PANN00A", "PANN00A"));
    ASSERT_EQ(image->bands().size(), 1u);
    EXPECT_EQ(image->bands()[0]->name(), "PANN00A");
    EXPECT_EQ(image->bands()[0]->index(), 0u);
    EXPECT_EQ(image->bandName(), "PANN00A");
    EXPECT_EQ(&image->take(), &take);
}

TEST_F(ModelTest, TakeDeletesItsImagesAndSkipsNullEntries)
{
    int l0Deaths = 0;
    int l2Deaths = 0;
    {
        Take take(manager);
        take.addImage(l0(take, "LINE1PANN00A", l0Deaths));
        take.addImage(static_cast<L0Image*>(nullptr));
        take.addImage(l0(take, "LINE1REDN00A", l0Deaths, "REDN00A"));
        take.addImage(new CountedL2Image(take, l2Deaths));
        take.addImage(static_cast<L2Image*>(nullptr));

        // Null entries are passed over by everything that walks the images.
        EXPECT_EQ(take.availableBands(), (std::vector<std::string>{"PANF28A", "REDN00A"}));
        EXPECT_EQ(take.name(), "LINE1");
    }
    EXPECT_EQ(l0Deaths, 2);
    EXPECT_EQ(l2Deaths, 1);
}

TEST_F(ModelTest, TakeListsButDoesNotDeleteItsDarkTakes)
{
    int deaths = 0;
    auto dark = std::make_unique<CountedTake>(manager, deaths);
    {
        Take take(manager);
        take.addDarkTake(dark.get());
        ASSERT_EQ(take.darkTakes().size(), 1u);
        EXPECT_EQ(take.darkTakes()[0], dark.get());
    }
    EXPECT_EQ(deaths, 0);
}

TEST_F(ModelTest, TakeRemovesAndDeletesItsOwnImagesOnly)
{
    int deaths = 0;
    Take take(manager);
    L0Image* pan = l0(take, "LINE1PANN00A", deaths, "PANN00A");
    L0Image* red = l0(take, "LINE1REDN00A", deaths, "REDN00A");
    auto* ortho = new CountedL2Image(take, deaths);
    take.addImage(pan);
    take.addImage(red);
    take.addImage(ortho);
    ASSERT_EQ(take.availableBands(), (std::vector<std::string>{"PANN00A", "REDN00A"}));

    take.remove(pan);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(take.imagesL0(), (std::vector<L0Image*>{red}));
    EXPECT_EQ(take.availableBands(), (std::vector<std::string>{"REDN00A"}));

    take.remove(static_cast<Image*>(ortho));
    EXPECT_EQ(deaths, 2);
    EXPECT_TRUE(take.imagesL2().empty());

    Take other(manager);
    int foreignDeaths = 0;
    std::unique_ptr<L0Image> foreign(l0(other, "LINE1PANN00A", foreignDeaths));
    EXPECT_EQ(thrownMessage([&] { take.remove(foreign.get()); }), "Trying to remove an Image not in this Take.");
    EXPECT_EQ(foreignDeaths, 0);
    EXPECT_EQ(take.imagesL0().size(), 1u);
}

TEST_F(ModelTest, TakeNameIsDerivedFromTheLevelZeroFileNames)
{
    Take take(manager);
    take.addImage(l0(take, "LINE_7PANN00B"));
    take.addImage(l0(take, "notes"));  // not a band file: skipped
    take.addImage(l0(take, "LINE_7REDB14A"));
    EXPECT_EQ(take.name(), "LINE_7");

    // The derived name is kept: later images no longer change it.
    take.addImage(l0(take, "OTHERPANN00A"));
    EXPECT_EQ(take.name(), "LINE_7");

    // Unlike the .info file rule, an underscore before the band code stays
    // part of the name.
    Take underscored(manager);
    underscored.addImage(l0(underscored, "L12_PANF28A"));
    EXPECT_EQ(underscored.name(), "L12_");

    // The whole base name is matched, so the name runs up to the last band
    // code (the .info rule stops at the first one).
    Take twoCodes(manager);
    twoCodes.addImage(l0(twoCodes, "L1PANF28AREDN00A"));
    EXPECT_EQ(twoCodes.name(), "L1PANF28A");
}

TEST_F(ModelTest, TakeNameSetExplicitlyWins)
{
    Take take(manager);
    take.addImage(l0(take, "LINE1PANN00A"));
    take.setName("Strip 4");
    EXPECT_EQ(take.name(), "Strip 4");

    Take empty(manager);
    empty.setName("L3");
    EXPECT_EQ(empty.name(), "L3");
}

TEST_F(ModelTest, TakeNameFailures)
{
    Take empty(manager);
    EXPECT_EQ(thrownMessage([&] { empty.name(); }), "Cannot derive strip name.");

    int l2Deaths = 0;
    Take unnamed(manager);
    unnamed.addImage(l0(unnamed, "image_0001"));
    unnamed.addImage(new CountedL2Image(unnamed, l2Deaths));  // level-2 files do not name a take
    EXPECT_EQ(thrownMessage([&] { unnamed.name(); }), "Cannot derive strip name.");
    // Still not derived: the failure repeats.
    EXPECT_EQ(thrownMessage([&] { unnamed.name(); }), "Cannot derive strip name.");

    Take conflicting(manager);
    conflicting.addImage(l0(conflicting, "LINE1PANN00A"));
    conflicting.addImage(l0(conflicting, "LINE2PANN00A"));
    EXPECT_EQ(thrownMessage([&] { conflicting.name(); }),
              "While trying to derive strip name, found conflicting values: LINE1 vs. LINE2");
}

TEST_F(ModelTest, RecordingSessionDeletesItsTakesAndGroundPoints)
{
    int takeDeaths = 0;
    int pointDeaths = 0;
    {
        RecordingSession session(dir.path().toStdString());
        session.addTake(new CountedTake(session, takeDeaths));
        session.addTake(nullptr);
        session.addTake(new CountedTake(session, takeDeaths));
        session.addGroundPoint(new CountedTiePoint("P1", *geographic, pointDeaths));
        // A point whose id changed after it was stored sits under two names;
        // it is still deleted once.
        auto* renamed = new CountedTiePoint("P2", *geographic, pointDeaths);
        session.addGroundPoint(renamed);
        renamed->setId("P3");
        session.addGroundPoint(renamed);
        ASSERT_EQ(session.groundPoints().size(), 3u);
        EXPECT_EQ(session.availableBands(), std::vector<std::string>{});
    }
    EXPECT_EQ(takeDeaths, 2);
    EXPECT_EQ(pointDeaths, 2);
}

TEST_F(ModelTest, BlockDeletesItsTakesAndGroundPoints)
{
    int takeDeaths = 0;
    int pointDeaths = 0;
    {
        Block block;
        block.addTake(new CountedTake(block, takeDeaths));
        block.addTake(nullptr);
        block.addGroundPoint(new CountedTiePoint("P1", *geographic, pointDeaths));
        block.addGroundPoint(new CountedTiePoint("P2", *geographic, pointDeaths));
    }
    EXPECT_EQ(takeDeaths, 1);
    EXPECT_EQ(pointDeaths, 2);
}

TEST_F(ModelTest, RecordingSessionRemovesOnlyItsOwnTakes)
{
    int deaths = 0;
    RecordingSession session(dir.path().toStdString());
    auto* first = new CountedTake(session, deaths);
    auto* second = new CountedTake(session, deaths);
    session.addTake(first);
    session.addTake(second);

    session.remove(static_cast<ImageCollection*>(first));
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(session.takes(), (std::vector<Take*>{second}));

    QTemporaryDir otherDir;
    RecordingSession other(otherDir.path().toStdString());
    EXPECT_EQ(thrownMessage([&] { session.remove(static_cast<ImageCollection*>(&other)); }), "Not a take.");

    CountedTake foreign(other, deaths);
    EXPECT_EQ(thrownMessage([&] { session.remove(static_cast<ImageCollection*>(&foreign)); }),
              "Trying to remove a take not in this session.");
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(session.takes().size(), 1u);

    EXPECT_EQ(thrownMessage([&] { session.remove(static_cast<Image*>(nullptr)); }),
              "No images in RecordingSessions.");
}

TEST_F(ModelTest, BlockRemovesOnlyItsOwnTakes)
{
    int deaths = 0;
    Block block;
    auto* take = new CountedTake(block, deaths);
    block.addTake(take);

    Block other;
    EXPECT_EQ(thrownMessage([&] { block.remove(static_cast<ImageCollection*>(&other)); }), "Not a take.");
    CountedTake foreign(other, deaths);
    EXPECT_EQ(thrownMessage([&] { block.remove(static_cast<ImageCollection*>(&foreign)); }),
              "Trying to remove a take not in this block.");
    EXPECT_EQ(thrownMessage([&] { block.remove(static_cast<Image*>(nullptr)); }), "No images in Blocks.");
    EXPECT_EQ(deaths, 0);

    block.remove(static_cast<ImageCollection*>(take));
    EXPECT_EQ(deaths, 1);
    EXPECT_TRUE(block.takes().empty());
}

TEST_F(ModelTest, TakeDirectoriesOfSessionAndBlock)
{
    RecordingSession session(dir.path().toStdString());
    Take* inSession = new Take(session);
    session.addTake(inSession);
    const std::string canonical = QDir(dir.path()).canonicalPath().toStdString();
    EXPECT_EQ(session.directory(*inSession), canonical);
    EXPECT_EQ(session.name(), QDir(dir.path()).dirName().toStdString());

    Block block;
    block.setFilename(canonical + "/project/block.blf");
    Take* named = new Take(block);
    named->setName("L12");
    block.addTake(named);
    EXPECT_EQ(block.blockDirectory(), canonical + "/project");
    EXPECT_EQ(block.directory(*named), canonical + "/project/strips/L12");

    Take* derived = new Take(block);
    derived->addImage(l0(*derived, "LINE3PANF28A"));
    block.addTake(derived);
    EXPECT_EQ(block.directory(*derived), canonical + "/project/strips/LINE3");
}

TEST_F(ModelTest, UnknownGroundPointBecomesATiePointInTheSharedMercatorSystem)
{
    RecordingSession session(dir.path().toStdString());
    GroundPoint* point = session.groundPoint("GCP 17");
    ASSERT_NE(point, nullptr);
    EXPECT_NE(dynamic_cast<TiePoint*>(point), nullptr);
    EXPECT_EQ(point->id(), "GCP 17");
    EXPECT_EQ(point->x(), 0.0);
    EXPECT_EQ(point->y(), 0.0);
    EXPECT_EQ(point->z(), 0.0);
    EXPECT_EQ(point->coordSys().name(), "Mercator");
    EXPECT_EQ(point->coordSys(), *geo::coordSysFactory::getInstance().createMercator(0));

    EXPECT_EQ(session.groundPoint("GCP 17"), point);
    EXPECT_EQ(session.groundPoints().size(), 1u);

    // Every such point, in any manager, shares one coordinate system object.
    Block block;
    GroundPoint* other = block.groundPoint("T1");
    EXPECT_EQ(&other->coordSys(), &point->coordSys());
    EXPECT_EQ(&session.groundPoint("GCP 18")->coordSys(), &point->coordSys());

    // Also when the point is made on another thread.
    const geo::coordSys* fromThread = nullptr;
    std::thread([&] { fromThread = &block.groundPoint("T2")->coordSys(); }).join();
    EXPECT_EQ(fromThread, &point->coordSys());
}

TEST_F(ModelTest, ConstGroundPointLookupAddsNothing)
{
    Block block;
    const Block& constBlock = block;
    EXPECT_EQ(constBlock.groundPoint("missing"), nullptr);
    EXPECT_TRUE(constBlock.groundPoints().empty());

    GroundPoint* made = block.groundPoint("made");
    EXPECT_EQ(constBlock.groundPoint("made"), made);
}

TEST_F(ModelTest, AddingAGroundPointUnderATakenNameReplacesWithoutDeleting)
{
    int deaths = 0;
    auto replaced = std::make_unique<CountedTiePoint>("P", *geographic, deaths);
    {
        Block block;
        block.addGroundPoint(replaced.get());
        auto* replacement = new CountedTiePoint("P", *geographic, deaths);
        block.addGroundPoint(replacement);
        EXPECT_EQ(block.groundPoint("P"), replacement);
        EXPECT_EQ(block.groundPoints().size(), 1u);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);  // only the replacement belonged to the block
}
