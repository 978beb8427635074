#include <datamodel/timing/CameraTime.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/timing/TimeAdaptor_p.h>
#include <datamodel/timing/TmFile.h>
#include <datamodel/validation/ValidationTraverser.h>

#include <platform/raster/CtFile.h>
#include <platform/sensor/CameraTime.h>

#include <QFileInfo>

#include <cmath>
#include <stdexcept>

namespace datamodel {

namespace {

const char* const sNotInitialized = "CameraTime not initialized.";

} // namespace

CameraTime::CameraTime()
    : m_image(nullptr)
    , m_initialized(false)
{
}

CameraTime::CameraTime(const L0Image& image)
    : m_image(&image)
    , m_initialized(false)
{
}

CameraTime::CameraTime(const L0Image& image, const CameraTime& other)
    : m_image(&image)
    , m_initialized(false)
{
    other.initializeData();
    m_model = std::make_unique<sensor::CameraTime>(*other.m_model);
}

CameraTime::CameraTime(const std::string& ctgFile)
    : m_image(nullptr)
    , m_initialized(false)
    , m_model(std::make_unique<sensor::CameraTime>(ctgFile))
{
    m_initialized = true;
}

CameraTime::~CameraTime() = default;

std::unique_ptr<CameraTime> CameraTime::fromCtgFile(const std::string& ctgFile)
{
    return std::unique_ptr<CameraTime>(new CameraTime(ctgFile));
}

void CameraTime::cache()
{
    initializeData();
}

TmFile& CameraTime::sessionTmFile() const
{
    return img().take().session().tmFile();
}

void CameraTime::initializeData() const
{
    if (m_initialized)
        return;

    std::string ctgFailure;
    try {
        if (m_model) {
            m_model->loadData();
        } else {
            auto model = std::make_unique<sensor::CameraTime>(ctgFileName());
            m_model = std::move(model);
        }
        m_initialized = true;
        return;
    } catch (const std::exception& e) {
        ctgFailure = e.what();
    }

    try {
        const TimeAdaptor adaptor(img());
        buildFromCt(adaptor, sessionTmFile());
    } catch (const std::exception& e) {
        throw std::runtime_error("Could not read CTG file. Reason: " + ctgFailure
                                 + "\n\nAnd also could not create a valid CTG from CT. Inner Exception: " + e.what());
    }
}

void CameraTime::convertCtToGps(std::span<const double> ctSec, const std::string& ctFileName, TmFile& tm,
                                std::vector<Seconds>& gps)
{
    if (ctSec.empty())
        throw std::runtime_error(ctFileName + ": time out of range.");
    tm.load(TmFile::CT_TYPE, seconds(ctSec.front()), seconds(ctSec.back()));
    gps.resize(ctSec.size());
    // A band's CT values ascend: one walk over the marks converts them.
    tm.gpsAtCT(ctSec, gps);
}

void CameraTime::buildFromCt(const TimeAdaptor& ct, TmFile& tm) const
{
    if (m_initialized)
        return;
    const std::span<const double> ctSec = ct.values(); // throws without a source
    std::vector<Seconds> times;
    convertCtToGps(ctSec, ct.ctFile()->name(), tm, times);
    adopt(std::move(times));
}

void CameraTime::adopt(std::vector<Seconds>&& times) const
{
    if (!m_model) {
        auto model = std::make_unique<sensor::CameraTime>();
        if (!m_image)
            throw std::runtime_error(sNotInitialized);
        model->setCtgFileName(m_image->ctgFilename());
        m_model = std::move(model);
    }
    m_model->values() = std::move(times);
    m_initialized = true;
}

void CameraTime::createFromCtTm(const TimeAdaptor& ct, const TmFile& tm)
{
    if (m_initialized)
        return;
    std::vector<Seconds> times(ct.size());
    tm.gpsAtCT(ct.values(), times);
    adopt(std::move(times));
}

std::size_t CameraTime::size() const
{
    initializeData();
    return m_model->size();
}

Seconds CameraTime::value(std::size_t i) const
{
    initializeData();
    if (i >= m_model->size())
        throw std::runtime_error("CT index out of range.");
    return m_model->gpsTime(static_cast<float>(i));
}

Seconds CameraTime::cycleTime(float line) const
{
    initializeData();
    return m_model->cycleTime(line);
}

const std::vector<Seconds>& CameraTime::values() const
{
    try {
        initializeData();
    } catch (const std::exception& e) {
        throw std::runtime_error(std::string("Could not initialize the camera times object. Reason: ") + e.what());
    }
    return m_model->values();
}

std::vector<Seconds>& CameraTime::values()
{
    initializeData();
    return m_model->values();
}

bool CameraTime::isNonUniformCT() const
{
    initializeData();
    return m_model->isNonUniformCT();
}

Seconds CameraTime::averageTimeDelta(unsigned digits) const
{
    const std::size_t n = size();
    if (n < 2)
        throw std::runtime_error("Not computing average delta with less than 2 times");
    const double delta = (value(n - 1) - value(0)).value() / double(n - 1);
    // Rounded half away from zero to digits + 1 decimals; the scale is a
    // single-precision power of ten.
    const float scale = std::pow(10.0f, float(digits + 1));
    const double scaled = delta > 0.0 ? std::trunc(delta * scale + 0.5) : std::trunc(delta * scale - 0.5);
    return seconds(scaled / scale);
}

void CameraTime::computeMinMax(Seconds& min, Seconds& max) const
{
    if (!m_initialized && !ctgFileCreated()) {
        // The two end lines through the time-mark file: no CTG is built.
        const TimeAdaptor adaptor(img());
        const std::size_t n = adaptor.size();
        TmFile& tm = sessionTmFile();
        const Seconds first = adaptor.value(0);
        const Seconds last = adaptor.value(n - 1);
        tm.load(TmFile::CT_TYPE, first, last);
        min = tm.gpsAtCT(first);
        max = tm.gpsAtCT(last);
        return;
    }
    initializeData();
    const std::size_t n = m_model->size();
    if (n == 0)
        throw std::runtime_error("No ctg data available.");
    min = value(0);
    max = value(n - 1);
}

void CameraTime::write(const std::string& path)
{
    initializeData();
    if (!path.empty())
        m_model->setCtgFileName(path);
    m_model->writeData();
}

const std::string& CameraTime::ctgFileName() const
{
    return img().ctgFilename();
}

bool CameraTime::ctgFileCreated() const
{
    return QFileInfo::exists(QString::fromStdString(ctgFileName()));
}

const L0Image& CameraTime::img() const
{
    if (!m_image)
        throw std::runtime_error(sNotInitialized);
    return *m_image;
}

void CameraTime::traverse(ValidationTraverser& traverser)
{
    initializeData();
    traverser.validate(*this);
}

void CameraTime::createFromCtTm(const std::string& ctFile, const std::string& tmFile)
{
    const TimeAdaptor adaptor(ctFile);
    TmFile tm(tmFile);
    buildFromCt(adaptor, tm);
}

void CameraTime::createFromCtTmFiles()
{
    if (!m_image)
        throw std::runtime_error(sNotInitialized);
    const TimeAdaptor adaptor(m_image->ctFilename());
    buildFromCt(adaptor, sessionTmFile());
    m_model->writeData();
}

} // namespace datamodel
