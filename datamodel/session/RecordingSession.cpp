#include <datamodel/session/RecordingSession.h>

#include <datamodel/model/InfoFile.h>
#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Settings.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/SessionDataFile.h>
#include <datamodel/timing/TmFile.h>
#include <datamodel/trajectory/ImuTrajectory.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/flightdata/FlightDataFactory.h>
#include <platform/flightdata/Utility.h>
#include <platform/util/ErrorText.h>
#include <platform/util/InvalidFileError.h>
#include <platform/util/FileSessionNameGenerator.h>
#include <platform/util/RegularFile.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <stdexcept>

namespace datamodel {

RecordingSession::ImuTrajectoryId::ImuTrajectoryId(const std::string& name, std::uint32_t timeSec)
    : m_name(name)
    , m_timeSec(timeSec)
{
}

RecordingSession::ImuTrajectoryId::ImuTrajectoryId(const std::string& text)
{
    const std::size_t separator = text.find(';');
    if (separator == std::string::npos)
        throw std::runtime_error("Can't construct ImuTrajectoryId; string is invalid: \"" + util::excerpt(text) + "\".");
    const std::string timeText = text.substr(0, separator);
    bool ok = false;
    const qulonglong timeSec = QString::fromStdString(timeText).toULongLong(&ok, 10);
    if (!ok || timeSec > sUnsetTime)
        throw std::runtime_error("Can't convert to timestamp: " + util::excerpt(timeText));
    m_timeSec = static_cast<std::uint32_t>(timeSec);
    m_name = text.substr(separator + 1);
}

bool RecordingSession::ImuTrajectoryId::operator==(const ImuTrajectoryId& other) const
{
    return m_name == other.m_name && m_timeSec == other.m_timeSec;
}

bool RecordingSession::ImuTrajectoryId::operator<(const ImuTrajectoryId& other) const
{
    return m_name != other.m_name ? m_name < other.m_name : m_timeSec < other.m_timeSec;
}

std::string RecordingSession::ImuTrajectoryId::toString() const
{
    return std::to_string(m_timeSec) + ";" + m_name;
}

std::string RecordingSession::ImuTrajectoryId::description() const
{
    const QString when = QDateTime::fromSecsSinceEpoch(qint64(m_timeSec)).toLocalTime().toString(
        QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const std::string text = m_name + " modified on " + when.toStdString();
    return isRealtime() ? "REALTIME: " + text : text;
}

bool RecordingSession::ImuTrajectoryId::isRealtime() const
{
    if (m_name.size() < 3)
        return false;
    return QString::fromStdString(m_name.substr(m_name.size() - 3)).toLower() == QLatin1String("rnv");
}

const char* const RecordingSession::sSessionNamingRegKey = "DataprepSessionNaming";
const char* const RecordingSession::sFileNamingRegKey = "DataprepFileNaming";

namespace {

const QString sBandPattern = QStringLiteral("(.+)(_?)(RED|BLU|GRN|PAN|NIR)(F|B|N)([0-9]{2,2})(A|B)");

QStringList list(const QString& directory, const QStringList& filters, QDir::Filters kind = QDir::Files)
{
    return QDir(directory).entryList(filters, kind, QDir::Name);
}

// The calibration version of the flight's camera file; -1 when there is no
// readable camera file.
int calibrationVersion(const flightdata::SessionInterface& flight)
{
    if (flight.cameraFile().empty())
        return -1;
    try {
        return Sensor::fromCameraFile(flight.cameraFile()).calibrationVersion();
    } catch (const std::exception&) {
        return -1;
    }
}

} // namespace

RecordingSession::RecordingSession(const std::string& path, bool buildTakesNow)
    : RecordingSession(path, OpenOptions{buildTakesNow, true})
{
}

RecordingSession::RecordingSession(const std::string& path, const OpenOptions& options)
{
    const QString qpath = QString::fromStdString(path);
    m_sessionPath = QDir(qpath).canonicalPath().toStdString();
    if (!path.empty() && m_sessionPath.empty())
        throw std::runtime_error("Can't find path provided for RecordingSession: " + path);
    m_leaveOutDisagreeingInfoFiles = options.leaveOutDisagreeingInfoFiles;
    initialize(path, options.throwOnPatternError);
    if (options.buildTakesNow)
        buildTakes(true);
}

void RecordingSession::initialize(const std::string& path, bool throwOnPatternError)
{
    const QFileInfo info(QString::fromStdString(path));
    const QString suffix = info.completeSuffix();
    if (suffix == QLatin1String("raw") || suffix == QLatin1String("xml") || suffix == QLatin1String("raw.xml"))
        throw std::runtime_error("Raw mass-memory recordings are not supported yet: " + path);
    if (!info.isDir())
        throw std::runtime_error("Cannot find directory: " + info.canonicalFilePath().toStdString());
    const QStringList rawFilters{QStringLiteral("*.raw"), QStringLiteral("*.raw.xml")};
    if (!list(info.canonicalFilePath(), rawFilters).isEmpty())
        throw std::runtime_error("Raw mass-memory recordings are not supported yet: " + path);
    // A mass-memory copy in the mm folder is not read; the session goes on
    // from its directory, as it does when that copy cannot be read.
    m_directory = info.canonicalFilePath().toStdString();
    m_outputDirectory = m_directory;
    if (throwOnPatternError) {
        loadFileNamePattern();
        return;
    }
    try {
        loadFileNamePattern();
    } catch (const std::exception& e) {
        m_fileNamePatternError = e.what();
    }
}

QStringList RecordingSession::listFiles(const QString& directory, const QStringList& filters, bool readableOnly) const
{
    QStringList files;
    // Special files and dangling links are listed too, to be noted.
    const QDir::Filters kinds = QDir::Files | QDir::System | QDir::Dirs | QDir::NoDotAndDotDot;
    for (const QFileInfo& entry : QDir(directory).entryInfoList(filters, kinds, QDir::Name)) {
        const std::string reason = util::notRegularReason(entry.absoluteFilePath(), readableOnly);
        if (reason.empty()) {
            files.push_back(entry.fileName());
            continue;
        }
        const std::string path = QDir::cleanPath(entry.absoluteFilePath()).toStdString();
        if (std::none_of(m_skippedFiles.begin(), m_skippedFiles.end(),
                         [&](const SkippedFile& known) { return known.path == path; }))
            m_skippedFiles.push_back({path, reason});
    }
    return files;
}

RecordingSession::~RecordingSession()
{
    for (Take* take : m_takes)
        delete take;
    deleteGroundPoints();
}

std::vector<Take*> RecordingSession::takes() const
{
    if (!m_takesBuilt && m_takes.empty())
        buildTakes(false);
    return m_takes;
}

std::string RecordingSession::directory(const Take&) const
{
    return m_directory;
}

int RecordingSession::splitSessionNumber() const
{
    throw std::runtime_error("This RecordingSession not from a .raw file.");
}

void RecordingSession::addTake(Take* take)
{
    m_takes.push_back(take);
    m_availableBands.clear();
}

void RecordingSession::updateTakes(bool checkElevation)
{
    for (Take* take : m_takes)
        delete take;
    m_takes.clear();
    m_availableBands.clear();
    m_takesBuilt = false;
    buildTakes(checkElevation);
}

std::string RecordingSession::findRawFolder() const
{
    const QString raw = QString::fromStdString(m_sessionPath) + QStringLiteral("/raw");
    if (!QFileInfo(raw).isDir())
        throw std::runtime_error("Can't find raw folder: " + raw.toStdString());
    return raw.toStdString();
}

void RecordingSession::buildTakes(bool) const
{
    if (m_takesBuilt)
        return;
    // Elevation checks apply to takes read from raw recordings only.
    if (!buildTakesFromStripFiles() && !buildTakesFromFlightData())
        buildTakesFromInfoFiles();
    m_takesBuilt = true;
    m_availableBands.clear();
}

bool RecordingSession::buildTakesFromStripFiles() const
{
    const QString raw = QString::fromStdString(findRawFolder());
    const QStringList files = listFiles(raw, {QStringLiteral("*.stp")}, false);
    if (files.isEmpty())
        return false;
    std::vector<std::unique_ptr<Take>> built;
    auto* self = const_cast<RecordingSession*>(this);
    for (const QString& file : files) {
        auto take = std::make_unique<Take>(*self);
        const std::string path = QFileInfo(raw + QLatin1Char('/') + file).canonicalFilePath().toStdString();
        try {
            take->parseStpFile(path);
        } catch (const std::exception&) {
            util::rethrowNaming("the strip file", path);
        }
        built.push_back(std::move(take));
    }
    for (auto& take : built)
        m_takes.push_back(take.release());
    return true;
}

bool RecordingSession::buildTakesFromFlightData() const
{
    std::shared_ptr<flightdata::SessionInterface> flight;
    try {
        flight = flightDataSession();
    } catch (const std::exception&) {
        return false;
    }
    if (!flightdata::Utility::isZelM9(*flight))
        return false;

    const bool includeUnplanned = Settings::includeUnplannedLines();
    const int version = calibrationVersion(*flight);
    const QString raw = QString::fromStdString(m_directory) + QStringLiteral("/raw/");
    auto* self = const_cast<RecordingSession*>(this);
    std::vector<std::unique_ptr<Take>> built;
    for (const flightdata::ZelLine& line : flight->lines()) {
        for (const flightdata::ZelTake& zelTake : line.takes) {
            // Dark takes are takes too: handleDarkTakes() below attaches
            // each to the take of its line.
            if (!includeUnplanned && zelTake.label().rfind("UL", 0) == 0)
                continue;
            std::vector<std::unique_ptr<InfoFile>> infos;
            for (const flightdata::ZelBand& band : zelTake.bands()) {
                const QString path = raw + QString::fromStdString(band.infoFile());
                if (!QFileInfo::exists(path))
                    throw std::runtime_error("Wrong file path in FlightData.xml, named: " + path.toStdString());
                try {
                    infos.push_back(std::make_unique<InfoFile>(path.toStdString(), sBandPattern));
                } catch (const std::exception&) {
                    util::rethrowNaming("the info file", path.toStdString());
                }
            }
            if (infos.empty())
                continue;
            std::vector<InfoFile*> pointers;
            for (const auto& info : infos)
                pointers.push_back(info.get());
            built.push_back(std::make_unique<Take>(*self, zelTake.label(), pointers, 0.0f, 0.0f,
                                                   flight->sensorSerial(), flight->sensorType(), version));
            built.back()->setLineNumber(std::uint32_t(line.number));
        }
    }
    for (auto& take : built)
        m_takes.push_back(take.release());
    self->handleDarkTakes();
    return true;
}

void RecordingSession::buildTakesFromInfoFiles() const
{
    const QString raw = QString::fromStdString(m_directory) + QStringLiteral("/raw/");
    QStringList files = listFiles(raw, {QStringLiteral("*.info")}, false);
    files.removeAll(QStringLiteral("rawdownload.info"));
    if (files.isEmpty())
        throw std::runtime_error("Can't get a list of takes (no .info files found) for " + m_directory);

    std::vector<std::unique_ptr<InfoFile>> infos;
    for (const QString& file : files)
        try {
            infos.push_back(std::make_unique<InfoFile>((raw + file).toStdString(), sBandPattern));
        } catch (const std::exception&) {
            util::rethrowNaming("the info file", (raw + file).toStdString());
        }
    // The file at fault is the one that differs from the most of them (a
    // file without an identifier among many with one), named as the reason.
    // Opened to leave such files out, the session keeps the rest.
    auto checkSame = [&](const char* what, const char* field, auto value) {
        std::map<std::string, int> counts;
        for (const auto& info : infos)
            ++counts[value(*info)];
        if (counts.size() < 2)
            return;
        const std::string common
            = std::max_element(counts.begin(), counts.end(), [](const auto& a, const auto& b) {
                  return a.second < b.second;
              })->first;
        const auto typical = std::find_if(infos.begin(), infos.end(), [&](const auto& info) { return value(*info) == common; });
        const std::string text = what + util::excerpt(value(*infos.front())) + " and ";
        for (std::size_t i = 0; i < infos.size();) {
            if (value(*infos[i]) == common) {
                ++i;
                continue;
            }
            const std::string& path = infos[i]->infoFileName();
            const std::string& other = value(*infos.front()) == common ? value(*infos[i]) : common;
            std::exception_ptr failure;
            try {
                try {
                    throw util::InvalidFileError(path, path + " has the " + field + " \"" + util::excerpt(value(*infos[i]))
                                                           + "\" where " + (*typical)->infoFileName() + " and "
                                                           + std::to_string(counts[common] - 1) + " more have \""
                                                           + util::excerpt(common) + "\"");
                } catch (const std::exception&) {
                    std::throw_with_nested(std::runtime_error(text + util::excerpt(other)));
                }
            } catch (...) {
                failure = std::current_exception();
            }
            if (!m_leaveOutDisagreeingInfoFiles)
                std::rethrow_exception(failure);
            m_infoFileFailures.push_back(failure);
            infos.erase(infos.begin() + std::ptrdiff_t(i));
            files.removeAt(qsizetype(i));
        }
    };
    checkSame("Inconsistent camera identifiers in .info files; found ", "camera identifier",
              [](const InfoFile& info) -> const std::string& { return info.sensorId(); });
    checkSame("Inconsistent camera types in .info files; found ", "camera type",
              [](const InfoFile& info) -> const std::string& { return info.sensorType(); });

    // Distinct take names in listing order, each with its bands.
    const QRegularExpression pattern(sBandPattern, QRegularExpression::InvertedGreedinessOption);
    std::vector<std::pair<std::string, std::vector<InfoFile*>>> groups;
    for (std::size_t i = 0; i < infos.size(); ++i) {
        const QRegularExpressionMatch match = pattern.match(files[qsizetype(i)]);
        if (!match.hasMatch())
            throw std::runtime_error("Could not deduce Take naming from info file name " + files[qsizetype(i)].toStdString());
        const std::string name = match.captured(1).toStdString();
        auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& g) { return g.first == name; });
        if (group == groups.end())
            groups.emplace_back(name, std::vector<InfoFile*>{infos[i].get()});
        else
            group->second.push_back(infos[i].get());
    }

    int version = -1;
    std::shared_ptr<flightdata::SessionInterface> flight;
    try {
        flight = flightDataSession();
        version = calibrationVersion(*flight);
    } catch (const std::exception&) {
        // Without flight data the calibration version stays unknown.
    }

    auto* self = const_cast<RecordingSession*>(this);
    std::vector<std::unique_ptr<Take>> built;
    for (const auto& [name, group] : groups)
        built.push_back(std::make_unique<Take>(*self, name, group, 0.0f, 0.0f, infos.front()->sensorId(),
                                               infos.front()->sensorType(), version));
    for (auto& take : built)
        m_takes.push_back(take.release());
    if (flight)
        self->handleDarkTakes();
}

Take* RecordingSession::buildSpecificTake(const std::string& takeName)
{
    const QString wanted = QFileInfo(QString::fromStdString(takeName)).baseName();
    for (Take* take : m_takes)
        if (take && QString::fromStdString(take->name()) == wanted)
            return take;
    const QString raw = QString::fromStdString(findRawFolder());
    for (const QString& file : list(raw, {QStringLiteral("*.stp")})) {
        if (QFileInfo(file).baseName() != wanted)
            continue;
        auto take = std::make_unique<Take>(*this);
        const std::string path = QFileInfo(raw + QLatin1Char('/') + file).canonicalFilePath().toStdString();
        try {
            take->parseStpFile(path);
        } catch (const std::exception&) {
            util::rethrowNaming("the strip file", path);
        }
        addTake(take.get());
        return take.release();
    }
    throw std::runtime_error("Can't find Take: " + takeName);
}

bool RecordingSession::takeAndBandOfInfoFile(const std::string& path, std::string& take, std::string& band)
{
    static const QRegularExpression pattern(sBandPattern, QRegularExpression::InvertedGreedinessOption);
    const QRegularExpressionMatch match = pattern.match(QFileInfo(QString::fromStdString(path)).fileName());
    if (!match.hasMatch())
        return false;
    take = match.captured(1).toStdString();
    band = (match.captured(3) + match.captured(4) + match.captured(5) + match.captured(6)).toStdString();
    return true;
}

void RecordingSession::handleDarkTakes()
{
    try {
        const auto flight = flightDataSession();
        if (flight->sensorHead() != "QX310")
            return;
        // A take is known by the info files of its bands.
        auto takeWithInfo = [&](const std::string& infoName) -> Take* {
            for (Take* take : m_takes) {
                if (!take)
                    continue;
                for (const L0Image* image : take->imagesL0())
                    if (image && QFileInfo(QString::fromStdString(image->infoFileName())).fileName().toStdString() == infoName)
                        return take;
            }
            return nullptr;
        };
        for (const flightdata::ZelLine& line : flight->lines()) {
            const flightdata::ZelTake* imageTake = nullptr;
            for (const flightdata::ZelTake& zelTake : line.takes)
                if (!zelTake.isDark() && !zelTake.bands().empty()) {
                    imageTake = &zelTake;
                    break;
                }
            if (!imageTake)
                continue;
            Take* owner = takeWithInfo(imageTake->bands().front().infoFile());
            if (!owner)
                continue;
            for (const flightdata::ZelTake& zelTake : line.takes) {
                if (!zelTake.isDark() || zelTake.bands().empty())
                    continue;
                Take* dark = takeWithInfo(zelTake.bands().front().infoFile());
                const auto& listed = owner->darkTakes();
                if (dark && dark != owner && std::find(listed.begin(), listed.end(), dark) == listed.end())
                    owner->addDarkTake(dark);
            }
        }
    } catch (const std::exception&) {
        // Dark takes stay unattached when the flight data cannot tell.
    }
}

void RecordingSession::setSensorVersion(int version)
{
    sensor();
    m_sensor->setCalibrationVersion(version);
    for (Take* take : m_takes)
        if (take)
            take->setSensorVersion(version);
}

void RecordingSession::setOutputDirectory(const std::string& outDir)
{
    const QString base = QString::fromStdString(outDir);
    const QString sessionName = QString::fromStdString(name());
    QDir dir;
    if (!dir.mkpath(base + QLatin1Char('/') + sessionName))
        throw std::runtime_error("Failed to create: " + outDir + "/" + sessionName.toStdString());
    QDir target(base);
    if (!target.cd(sessionName))
        throw std::runtime_error("Failed to access: " + outDir + "/" + sessionName.toStdString());
    const QString root = target.absolutePath();
    for (const char* folder : {"/images", "/raw", "/mm", "/gps-imu"}) {
        if (!dir.mkpath(root + QLatin1String(folder)))
            throw std::runtime_error("Failed to create: " + root.toStdString() + folder);
    }
    const std::string id = name();
    for (const char* folder : {"/extract", "/gps", "/ground", "/proc", "/raw"}) {
        const QString path = root + QStringLiteral("/gps-imu/") + QString::fromStdString(id) + QLatin1String(folder);
        if (!dir.mkpath(path))
            throw std::runtime_error("Failed to create: " + root.toStdString() + "gps-imu/" + id + folder);
    }
    m_outputDirectory = root.toStdString();
}

const Sensor& RecordingSession::sensor() const
{
    if (!m_sensor) {
        const std::vector<Take*> all = takes();
        std::string id;
        std::string type;
        bool first = true;
        for (const Take* take : all) {
            if (!take)
                continue;
            if (first) {
                id = take->sensorId();
                type = take->sensorType();
                first = false;
            } else if (take->sensorId() != id) {
                throw std::runtime_error("Inconsistent sensor IDs");
            } else if (take->sensorType() != type) {
                throw std::runtime_error("Inconsistent sensor types");
            }
        }
        std::unique_ptr<Sensor> made;
        try {
            const auto flight = flightDataSession();
            if (!flight->cameraFile().empty() && QFileInfo::exists(QString::fromStdString(flight->cameraFile()))) {
                Sensor described = Sensor::fromCameraFile(flight->cameraFile());
                if (described.id() == id || id.empty())
                    made = std::make_unique<Sensor>(std::move(described));
            }
        } catch (const std::exception&) {
            // No calibration without readable flight data and camera file.
        }
        m_sensor = made ? std::move(made) : std::make_unique<Sensor>(id, type);
    }
    return *m_sensor;
}

std::string RecordingSession::sensorId() const
{
    return sensor().id();
}

std::string RecordingSession::sensorType() const
{
    return sensor().type();
}

std::string RecordingSession::findGpsImuDirectory() const
{
    if (!m_gpsImuDirectory.empty())
        return m_gpsImuDirectory;
    m_gpsImuDirectory = searchGpsImuDirectory();
    return m_gpsImuDirectory;
}

std::string RecordingSession::searchGpsImuDirectory() const
{
    const QString gpsImu = QString::fromStdString(m_directory) + QStringLiteral("/gps-imu/");
    const QStringList folders = list(gpsImu, {}, QDir::Dirs | QDir::NoDotAndDotDot);
    if (folders.size() == 1)
        return (gpsImu + folders.front()).toStdString();
    const QStringList marker = list(QString::fromStdString(m_directory), {QStringLiteral("GnssImu.dat")});
    if (marker.size() == 1)
        return m_directory;
    throw std::runtime_error("Expected exactly one subdirectory under " + m_directory + "/gps-imu/, but found "
                             + std::to_string(marker.size()));
}

TmFile& RecordingSession::tmFile() const
{
    if (m_tmFile)
        return *m_tmFile;
    // Each failed attempt is noted, newest first, and the search goes on.
    std::string errors;
    auto note = [&errors](const std::string& message) { errors = message + "\n" + errors; };
    auto open = [&](const QString& path) -> bool {
        try {
            m_tmFile = std::make_unique<TmFile>(path.toStdString());
            return true;
        } catch (const std::exception& e) {
            note(util::fullMessage(e));
            return false;
        }
    };
    const QString directory = QString::fromStdString(m_directory);
    const QString sessionName = QString::fromStdString(name());
    for (const char* folder : {"/raw/", "/extract/"}) {
        const QString candidate = directory + QStringLiteral("/gps-imu/") + sessionName + QLatin1String(folder)
            + sessionName + QStringLiteral(".tm");
        if (QFileInfo::exists(candidate) && open(candidate))
            return *m_tmFile;
    }
    // Which files a "Multiple ... found" refusal met, noted beside it.
    std::string candidates;
    auto noteRefusal = [&](const std::exception& e) {
        note(e.what());
        if (!candidates.empty())
            note(candidates);
        candidates.clear();
    };
    auto single = [&](const QStringList& filters, const char* multiple) -> bool {
        const QString extract = QString::fromStdString(findGpsImuDirectory()) + QStringLiteral("/extract/");
        // Special files (a pipe, a dangling link, a folder) are candidates
        // too: the time-mark reader refuses them and the refusal is listed.
        const QStringList found = list(extract, filters, QDir::Files | QDir::System | QDir::Dirs | QDir::NoDotAndDotDot);
        if (found.size() > 1) {
            candidates = "Found in " + QDir::cleanPath(extract).toStdString() + ": " + found.join(QStringLiteral(", ")).toStdString();
            throw std::runtime_error(std::string(multiple) + "\nList of error messages before this one:\n" + errors);
        }
        return found.size() == 1 && open(extract + found.front());
    };
    try {
        if (single({QStringLiteral("*.tm"), QStringLiteral("*.TM")}, "Multiple TM files found; expected exactly one."))
            return *m_tmFile;
    } catch (const std::exception& e) {
        noteRefusal(e);
    }
    try {
        try {
            (void)findGpsImuDirectory();
        } catch (const std::exception& e) {
            throw std::runtime_error(
                std::string("Could not get the GPS Imu directory name to look for tm*.dat files. Inner exception: ")
                + e.what());
        }
        if (single({QStringLiteral("tm*.DAT"), QStringLiteral("tm*.dat")},
                   "Multiple tm*.dat files found; expected exactly one."))
            return *m_tmFile;
    } catch (const std::exception& e) {
        noteRefusal(e);
    }
    throw std::runtime_error("Can't find a TM file for session " + name()
                             + "\nList of messages while trying to access it:\n" + errors);
}

std::vector<RecordingSession::ImuTrajectoryId*> RecordingSession::imuTrajectories() const
{
    if (m_imuTrajectoryIds.empty()) {
        const QString base = QString::fromStdString(findGpsImuDirectory());
        static const QRegularExpression solSbet(QStringLiteral("^.*\\.sol\\.[0-9\\.]*sbet$"));
        std::vector<std::unique_ptr<ImuTrajectoryId>> ids;
        const QDir proc(base + QStringLiteral("/proc/"));
        (void)listFiles(proc.path(), {QStringLiteral("*.sol"), QStringLiteral("*.sbet"), QStringLiteral("sbet*.out")}, true);
        for (const QFileInfo& file : proc.entryInfoList({QStringLiteral("*.sol"), QStringLiteral("*.sbet"),
                                                         QStringLiteral("sbet*.out")},
                                                        QDir::Files | QDir::Readable, QDir::Name)) {
            if (solSbet.match(file.fileName()).hasMatch() || file.completeSuffix() == QLatin1String("log"))
                continue;
            ids.push_back(std::make_unique<ImuTrajectoryId>(file.fileName().toStdString(),
                                                            std::uint32_t(file.lastModified().toSecsSinceEpoch())));
        }
        std::sort(ids.begin(), ids.end(), [](const auto& a, const auto& b) { return *a < *b; });
        const QDir extract(base + QStringLiteral("/extract/"));
        (void)listFiles(extract.path(), {QStringLiteral("*.rnv")}, true);
        for (const QFileInfo& file : extract.entryInfoList({QStringLiteral("*.rnv")}, QDir::Files | QDir::Readable,
                                                           QDir::Name))
            ids.push_back(std::make_unique<ImuTrajectoryId>(file.fileName().toStdString(),
                                                            std::uint32_t(file.lastModified().toSecsSinceEpoch())));
        m_imuTrajectoryIds = std::move(ids);
    }
    std::vector<ImuTrajectoryId*> result;
    for (const auto& id : m_imuTrajectoryIds)
        result.push_back(id.get());
    return result;
}

RecordingSession::ImuTrajectoryId* RecordingSession::addTrajectoryId(ImuTrajectoryId* id)
{
    m_imuTrajectoryIds.emplace_back(id);
    return id;
}

std::unique_ptr<ImuTrajectory> RecordingSession::createImuTrajectory(const ImuTrajectoryId& id) const
{
    const std::vector<ImuTrajectoryId*> known = imuTrajectories();
    if (std::none_of(known.begin(), known.end(), [&](const ImuTrajectoryId* k) { return k && *k == id; }))
        throw std::runtime_error("IMU Trajectory no longer exists: " + id.toString());
    return std::make_unique<ImuTrajectory>(imuTrajectoryPath(id));
}

std::string RecordingSession::imuTrajectoryPath(const ImuTrajectoryId& id) const
{
    const std::string folder = id.isRealtime() ? "/extract/" : "/proc/";
    return findGpsImuDirectory() + folder + id.name();
}

QDate RecordingSession::flightDate() const
{
    const std::vector<Take*> all = takes();
    if (all.empty())
        throw std::runtime_error("Looking for flight date, but there are no takes at all.");
    try {
        const QDateTime first = QDateTime::fromString(
            QString::fromStdString(flightdata::Utility::firstTake(*flightDataSession())),
            QString::fromLatin1(flightdata::TimePosition::sDateTimeString));
        if (first.isValid())
            return first.date();
    } catch (const std::exception&) {
        // Fall back to the info files.
    }
    for (const Take* take : all) {
        if (take && !take->imagesL0().empty() && take->imagesL0().front()->hasInfoFile())
            return take->imagesL0().front()->infoFile().flightStart().date();
    }
    throw std::runtime_error("Looking for flight date, but all takes have no images.");
}

std::shared_ptr<flightdata::SessionInterface> RecordingSession::flightDataSession() const
{
    if (!m_flightData) {
        try {
            m_flightData = flightdata::FlightDataFactory::instance().load(QString::fromStdString(m_sessionPath)
                                                                          + QStringLiteral("/mm"));
        } catch (const std::exception&) {
            // The reader's reason travels with the message.
            std::throw_with_nested(
                std::runtime_error("Can't find flight data XML; expected it in: " + m_sessionPath + "/mm/"));
        }
    }
    return m_flightData;
}

std::string RecordingSession::name() const
{
    if (!m_name.empty())
        return m_name;
    std::vector<Take*> all;
    if (!m_sessionNamingPattern.empty()) {
        try {
            all = takes();
        } catch (const std::exception&) {
            // Without takes the name is the directory's.
        }
    }
    if (m_sessionNamingPattern.empty() || all.empty() || !all.front()) {
        m_name = QDir(QString::fromStdString(m_directory)).dirName().toStdString();
        return m_name;
    }
    const Take& first = *all.front();
    util::FileSessionNameGenerator::Options options;
    options.lineName = first.label();
    if (first.lineNumber() != Take::sUnsetLineNumber)
        options.lineNumber = first.lineNumber();
    options.serial = sensor().idAsInt();
    options.sensorType = sensor().type();
    try {
        const auto flight = flightDataSession();
        static const QRegularExpression numbered(QStringLiteral("^(.+)_([0-9]+)$"));
        const QRegularExpressionMatch match = numbered.match(QString::fromStdString(flight->id()));
        options.sessionId = match.hasMatch() ? match.captured(1).toStdString() : flight->id();
        options.start = flight->flightStart().utc;
        if (first.lineNumber() != Take::sUnsetLineNumber)
            options.start = flightdata::Utility::takeFromLineNumber(*flight, first.lineNumber()).start().utc;
    } catch (const std::exception&) {
        if (first.hasStartInformation())
            options.start = first.startTime();
    }
    m_name = util::FileSessionNameGenerator(options, QString::fromStdString(m_sessionNamingPattern))
                 .createNameFromPattern();
    return m_name;
}

void RecordingSession::setSessionNamingPattern(const std::string& pattern)
{
    m_sessionNamingPattern = pattern;
    m_name.clear();
}

void RecordingSession::resetName(const std::string& name)
{
    m_name = name;
}

bool RecordingSession::loadFileNamePattern()
{
    const QString setting = Settings::dataprepFileNaming();
    if (!setting.isEmpty()) {
        m_fileNamingPattern = setting.toStdString();
        return true;
    }
    QString reason;
    const std::optional<QString> pattern = SessionDataFile::load(QString::fromStdString(m_sessionPath), &reason);
    m_fileNamePatternIgnored = reason.toStdString();
    if (!pattern)
        return false;
    m_fileNamingPattern = pattern->toStdString();
    return true;
}

bool RecordingSession::saveFileNamePattern()
{
    SessionDataFile::save(QString::fromStdString(m_sessionPath), QString::fromStdString(m_fileNamingPattern));
    return true;
}

std::vector<ImageCollection*> RecordingSession::collections() const
{
    const std::vector<Take*> all = takes();
    return std::vector<ImageCollection*>(all.begin(), all.end());
}

std::vector<std::string> RecordingSession::availableBands() const
{
    if (m_availableBands.empty())
        m_availableBands = bandsOf(takes());
    return m_availableBands;
}

void RecordingSession::remove(ImageCollection* collection)
{
    Take* take = dynamic_cast<Take*>(collection);
    if (!take)
        throw std::runtime_error("Not a take.");
    auto found = std::find(m_takes.begin(), m_takes.end(), take);
    if (found == m_takes.end())
        throw std::runtime_error("Trying to remove a take not in this session.");
    m_takes.erase(found);
    // Other takes may list it as their dark take.
    for (Take* other : m_takes)
        if (other)
            other->removeDarkTake(take);
    delete take;
    m_availableBands.clear();
}

void RecordingSession::remove(Image*)
{
    throw std::runtime_error("No images in RecordingSessions.");
}

void RecordingSession::traverse(ValidationTraverser& traverser)
{
    traverser.validate(*this);
}

} // namespace datamodel
