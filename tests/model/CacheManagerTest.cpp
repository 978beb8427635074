#include "TestSupport.h"

#include <datamodel/model/CacheManager.h>
#include <datamodel/model/Cacheable.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/L1Image.h>
#include <datamodel/model/L2Image.h>
#include <datamodel/model/Take.h>

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <stdexcept>
#include <string>
#include <vector>

using namespace datamodel;

namespace {

using Log = std::vector<std::string>;

// Objects that write into a shared log when their cache is released.
class LoggingL0Image : public L0Image {
public:
    LoggingL0Image(Take& take, const InfoFile& info, Log& log)
        : L0Image(take, 0, info, info.bandId() + ".zel", "", "", "")
        , m_log(log)
    {
    }
    void uncache() override { m_log.push_back("uncache " + bandName()); }

private:
    Log& m_log;
};

class LoggingL1Image : public L1Image {
public:
    LoggingL1Image(Take& take, Log& log)
        : L1Image(take)
        , m_log(log)
    {
    }
    raster::ImageReader& reader() const override { throw std::logic_error("not used"); }
    utzRaster::ImageWriter* createWriter(const utzRaster::ImageGeometry&, bool, ImageType) override
    {
        throw std::logic_error("not used");
    }
    void uncache() override { m_log.push_back("uncache L1"); }

private:
    Log& m_log;
};

class LoggingL2Image : public L2Image {
public:
    LoggingL2Image(Take& take, Log& log)
        : L2Image(take, "ortho.tif")
        , m_log(log)
    {
    }
    void uncache() override { m_log.push_back("uncache L2"); }

private:
    Log& m_log;
};

class LoggingTake : public Take {
public:
    LoggingTake(TakeManager& manager, Log& log)
        : Take(manager)
        , m_log(log)
    {
    }
    void uncache() override { m_log.push_back("uncache take"); }

private:
    Log& m_log;
};

// Records the callbacks it receives and then does what the base does.
class RecordingCacheManager : public CacheManager {
public:
    explicit RecordingCacheManager(Log& log)
        : m_log(log)
    {
    }
    using CacheManager::traverse;
    using CacheManager::uncache;
    void traverse(L0Image& image) override
    {
        m_log.push_back("visit " + image.bandName());
        CacheManager::traverse(image);
    }
    void traverse(L2Image& image) override
    {
        m_log.push_back("visit L2");
        CacheManager::traverse(image);
    }
    void traverse(Take& take) override
    {
        m_log.push_back("visit take");
        CacheManager::traverse(take);
    }

private:
    Log& m_log;
};

// A client that keeps every band's cache except the panchromatic ones.
class PanOnlyCacheManager : public CacheManager {
public:
    using CacheManager::traverse;
    void traverse(L0Image& image) override
    {
        if (image.bandName().rfind("PAN", 0) == 0)
            CacheManager::traverse(image);
    }
};

class CacheWalkTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    L0Image* image(const QByteArray& band)
    {
        return new LoggingL0Image(take, testsupport::makeInfoFile(dir, "L1_" + QString::fromLatin1(band), band), log);
    }

    QTemporaryDir dir;
    Log log;
    testsupport::PlainTakeManager manager;
    LoggingTake take{manager, log};
};

} // namespace

TEST_F(CacheWalkTest, UncachingATakeVisitsItsLevelZeroImagesInOrderThenTheTake)
{
    take.addImage(image("REDN00A"));
    take.addImage(static_cast<L0Image*>(nullptr));
    take.addImage(image("PANN00A"));
    take.addImage(new LoggingL2Image(take, log));
    RecordingCacheManager manager(log);

    manager.uncache(take);

    EXPECT_EQ(log, (Log{"visit REDN00A", "uncache REDN00A", "visit PANN00A", "uncache PANN00A", "uncache take"}));
}

TEST_F(CacheWalkTest, TakeWithoutLevelZeroImagesStillReleasesItsOwnCache)
{
    take.addImage(new LoggingL2Image(take, log));
    RecordingCacheManager manager(log);

    manager.uncache(take);

    EXPECT_EQ(log, (Log{"uncache take"}));
}

TEST_F(CacheWalkTest, ObjectsCallBackTheOverloadOfTheirOwnClass)
{
    take.addImage(image("PANF28A"));
    auto* ortho = new LoggingL2Image(take, log);
    take.addImage(ortho);
    LoggingL1Image corrected(take, log);
    RecordingCacheManager manager(log);

    manager.traverse(static_cast<Cacheable&>(*take.imagesL0()[0]));
    EXPECT_EQ(log, (Log{"visit PANF28A", "uncache PANF28A"}));

    log.clear();
    manager.traverse(static_cast<Cacheable&>(*ortho));
    EXPECT_EQ(log, (Log{"visit L2", "uncache L2"}));

    // A level-1 image has no overload of its own and is released as a whole.
    log.clear();
    manager.traverse(static_cast<Cacheable&>(corrected));
    EXPECT_EQ(log, (Log{"uncache L1"}));

    log.clear();
    manager.traverse(static_cast<Cacheable&>(take));
    EXPECT_EQ(log, (Log{"visit take", "visit PANF28A", "uncache PANF28A", "uncache take"}));
}

TEST_F(CacheWalkTest, ADerivedManagerDecidesImageByImage)
{
    take.addImage(image("REDN00A"));
    take.addImage(image("PANN00A"));
    take.addImage(image("NIRN00A"));
    PanOnlyCacheManager manager;

    manager.uncache(take);

    EXPECT_EQ(log, (Log{"uncache PANN00A", "uncache take"}));
}
