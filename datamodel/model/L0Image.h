#pragma once

#include <datamodel/model/Image.h>
#include <datamodel/model/Serializable.h>

#include <QDateTime>

#include <memory>
#include <string>

namespace datamodel {

class CameraTime;
class InfoFile;
class IntegrationTime;
class TdiData;

/// A level-0 (as recorded) image of one band of a take, with its family of
/// side files named after the pixel file: camera times (CT), gridded camera
/// times (CTG), integration times (IT), TDI stages, footprint, dark lines,
/// statistics, minimum and mask. It owns one Band, its integration-time and
/// TDI objects.
class L0Image : public Image, public Serializable, public virtual Validatable, public virtual Cacheable {
public:
    /// An image made from a band's info file. The pixel, CT, CTG and
    /// footprint paths are known; the integration time is the info file's
    /// (a constant), with one TDI stage.
    L0Image(Take& take, unsigned index, const InfoFile& info, const std::string& pixelFile,
            const std::string& ctFile, const std::string& ctgFile, const std::string& fptFile,
            unsigned swathWidthPx = 12000, unsigned sampleOffsetPx = 0);
    /// An image read back from a strip file. `infoFile` may be empty (no info
    /// file); the info file is read on first use.
    L0Image(Take& take, unsigned index, const std::string& pixelFile, const std::string& bandName,
            std::unique_ptr<IntegrationTime> integrationTime, std::unique_ptr<TdiData> tdiData,
            unsigned swathWidthPx, unsigned sampleOffsetPx, const std::string& infoFile, const std::string& ctFile,
            const std::string& ctgFile, const std::string& fptFile);
    ~L0Image() override;

    /// The image's position in its take.
    unsigned index() const { return m_index; }
    const std::string& bandName() const { return m_bandName; }
    unsigned swathWidth() const { return m_swathWidthPx; }
    unsigned sampleOffset() const { return m_sampleOffsetPx; }
    /// Look angle of the band in degrees (positive forward, negative
    /// backward): from the session's camera description when it describes
    /// the band, else from the band code.
    double lookAngle() const;

    /// Whether the image has an info file.
    bool hasInfoFile() const { return !m_infoFileName.empty(); }
    const std::string& infoFileName() const { return m_infoFileName; }
    /// The band's info file, read on first use. Throws as InfoFile does, or
    /// "No .info file for band: " + band name when there is none.
    const InfoFile& infoFile() const;

    IntegrationTime& integrationTime() { return *m_integrationTime; }
    const IntegrationTime& integrationTime() const { return *m_integrationTime; }
    /// Replaces the integration-time object; the image takes ownership.
    void setIntegrationTime(std::unique_ptr<IntegrationTime> integrationTime);
    TdiData& tdiData() { return *m_tdiData; }
    const TdiData& tdiData() const { return *m_tdiData; }
    void setTdiData(std::unique_ptr<TdiData> tdiData);

    /// The GPS times of the band's scan lines, made on first use and kept
    /// until uncache(); nothing is read until a time is asked for.
    CameraTime& cameraTime();
    const CameraTime& cameraTime() const;

    /// The static base name: label + "_" + serial mod 10000 (at least three
    /// digits) + "_" + start as "yyMMdd_HHmm" + "_" + band, e.g.
    /// L12_2004_090307_1004_PANF02A.
    static std::string staticName(const std::string& lineLabel, const QDateTime& start, unsigned serial,
                                  const std::string& bandName);

    /// The base name made from a file naming pattern (see
    /// util::FileSessionNameGenerator). Throws "The sensor ID for this camera
    /// is not numeric! (" + id + ")".
    static std::string dynamicName(const std::string& pattern, const std::string& lineLabel, long long lineNumber,
                                   const QDateTime& start, const std::string& sensorId,
                                   const std::string& sensorType, const std::string& bandName);

    /// The pixel file: derived once unless it was given: the images folder of
    /// the take's manager directory + the base name (from the session's file
    /// naming pattern when it has one, else the static name) + ".lov" for
    /// the newer sensor generation, else ".lri".
    const std::string& filename() const;
    /// Forgets the pixel file name so that the next filename() derives it
    /// again; the side-file names stay.
    void resetFilename();
    /// Side files in the raw folder of the take's manager directory, named
    /// after the pixel file's base name.
    const std::string& ctFilename() const;
    const std::string& ctgFilename() const;
    const std::string& itFilename() const;
    const std::string& tdiFilename() const;
    const std::string& fptFilename() const;
    std::string darkFilename() const;
    /// Beside the pixel file: its complete base name + ".stat".
    std::string statFilename() const;
    bool hasStatistics() const;
    /// Whether the pixel file's base name + ".min" exists beside it.
    virtual bool hasMinFile() const;
    /// Beside the pixel file: channel, look direction and group look angle,
    /// the line letter for PAN bands, then "_mask.zel" (PANN00A_mask.zel,
    /// REDN00_mask.zel).
    std::string maskFilename() const;

    raster::ImageReader& reader() const override;
    utzRaster::ImageWriter* createWriter(const utzRaster::ImageGeometry& geometry, bool overwrite,
                                         ImageType type) override;

    void write(Serializer& serializer) const override;
    /// Appends an "Image" element describing the image to `parent`.
    void write(QDomElement& parent, QDomDocument& document) const override;
    void read(Serializer& serializer) override;

    /// Releases the camera times.
    void uncache() override;
    /// Calls the manager's traverse(L0Image&).
    void traverse(CacheManager& manager) override;
    /// Calls the traverser's validate(L0Image&).
    void traverse(ValidationTraverser& traverser) override;

private:
    std::string sideFile(const char* extension) const;
    std::string staticName() const;
    std::string dynamicName(const std::string& pattern) const;

    unsigned m_index;
    std::string m_bandName;
    unsigned m_swathWidthPx;
    unsigned m_sampleOffsetPx;
    std::string m_infoFileName;
    mutable std::unique_ptr<InfoFile> m_info;
    std::unique_ptr<IntegrationTime> m_integrationTime;
    std::unique_ptr<TdiData> m_tdiData;
    mutable std::unique_ptr<CameraTime> m_cameraTime;
    mutable std::string m_filename;
    mutable std::string m_ctFilename;
    mutable std::string m_ctgFilename;
    mutable std::string m_itFilename;
    mutable std::string m_tdiFilename;
    mutable std::string m_fptFilename;
};

} // namespace datamodel
