#pragma once

#include <datamodel/model/Seconds.h>
#include <datamodel/model/Validatable.h>

#include <platform/geo/XYPoint.h>

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <string>

namespace datamodel {

/// The ".info" side file of one recorded band: sensor, band, flight line,
/// start and stop, and the band's camera-time and pixel files. The whole file
/// is parsed by the constructor; the object then only holds values.
class InfoFile : public virtual Validatable {
public:
    /// Checks an info file; the traversers implement it. The default body
    /// throws "The SensorId is empty in: " or "The SensorType is empty in: "
    /// followed by the info file name.
    class Validator {
    public:
        virtual ~Validator();
        virtual void validate(InfoFile& file);
    };

    /// The band-name pattern: strip name, optional "_", spectral channel,
    /// look direction (forward, backward, nadir), two digits, final letter.
    static const QString STRIPNAMEREGEX;

    /// Parses the file at `path` and derives the strip name from its base
    /// name with `stripNameRegex` (minimal matching; callers pass
    /// STRIPNAMEREGEX). Throws std::runtime_error with one of:
    /// "Cannot open .info file: ", "Cannot open parse XLM .info file: ",
    /// "Can't find lat/lon in info file: ", "Can't parse lat/lon in info file: "
    /// (each followed by the path), "Cannot parse time: " followed by the text,
    /// "Could not deduct Take naming from info file name " followed by the path.
    InfoFile(const std::string& path, const QString& stripNameRegex);
    InfoFile(const InfoFile& other);
    InfoFile& operator=(const InfoFile& other);
    ~InfoFile() override;

    const std::string& infoFileName() const { return m_infoFileName; }
    const std::string& pixelFilename() const { return m_pixelFilename; }
    const std::string& ctFileName() const { return m_ctFileName; }
    const std::string& sensorType() const { return m_sensorType; }
    const std::string& sensorId() const { return m_sensorId; }
    const std::string& bandId() const { return m_bandId; }
    const std::string& stripName() const { return m_stripName; }
    /// Longitude and latitude (degrees) of the line start.
    geo::XYPoint startPos() const { return geo::XYPoint(m_startPos[0], m_startPos[1]); }
    /// Longitude and latitude (degrees) of the line stop.
    geo::XYPoint stopPos() const { return geo::XYPoint(m_stopPos[0], m_stopPos[1]); }
    /// Midpoint of start and stop position.
    geo::XYPoint centerPoint() const;
    /// Mean of the start and stop heights. Heights are not read from the
    /// file, so this is always 0; a take gets its heights elsewhere.
    float meanFlyingHeight() const;
    /// UTC; null when the file has no flight_start time.
    const QDateTime& flightStart() const { return m_flightStart; }
    /// UTC; null when the file has no start element.
    const QDateTime& lineStart() const { return m_lineStart; }
    /// UTC; null when the file has no stop element.
    const QDateTime& lineStop() const { return m_lineStop; }
    /// The recorded integration time (the file gives milliseconds); -1 s when absent.
    Seconds integrationTime() const { return seconds(m_integrationTimeSec); }
    /// True when the integration time is greater than 0.
    bool hasIntegrationTimeSet() const { return m_integrationTimeSec > 0.0; }
    std::int32_t lineNumber() const { return m_lineNumber; }
    const std::string& lineLabel() const { return m_lineLabel; }

    /// Parses a sexagesimal angle "degrees:minutes:seconds" into decimal
    /// degrees. The angle is negative when the degree text holds a "-".
    /// With only one colon, minutes and seconds are both read from the text
    /// after it ("12:30" is 12 + 30/60 + 30/3600). Returns false, with
    /// `value` 0, when there is no colon or a part does not convert.
    static bool angleFromString(const QString& text, double& value);

    /// Calls the traverser's validate(InfoFile&).
    void traverse(ValidationTraverser& traverser) override;

private:
    void parseInfoFile();

    std::string m_infoFileName;
    std::string m_pixelFilename;
    std::string m_ctFileName;
    std::string m_sensorType;
    std::string m_sensorId;
    std::string m_bandId;
    std::string m_stripName;
    double m_startPos[3] = {0.0, 0.0, 0.0};
    double m_stopPos[3] = {0.0, 0.0, 0.0};
    QDateTime m_flightStart;
    QDateTime m_lineStart;
    QDateTime m_lineStop;
    double m_integrationTimeSec = -1.0;
    std::int32_t m_lineNumber = 0;
    std::string m_lineLabel;
};

} // namespace datamodel
