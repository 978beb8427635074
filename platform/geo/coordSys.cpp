#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>

#include <proj.h>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace geo {

namespace {

constexpr const char* sWgs84Geographic3D = "EPSG:4979";

std::string projError(PJ_CONTEXT* ctx)
{
    const int code = proj_context_errno(ctx);
    const char* text = code ? proj_context_errno_string(ctx, code) : nullptr;
    return text ? std::string(text) : std::string("unknown PROJ error");
}

std::string formatDeg(double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.12g", value);
    return buffer;
}

} // namespace

// One PROJ context per system (PROJ contexts are not shared across threads)
// and one operation between the system and geographic WGS84. `opFromGeo`
// tells the operation's forward direction: from WGS84 (LSR pipelines) or to
// WGS84 (operations made from a CRS). A null operation is the identity.
struct coordSys::Impl {
    PJ_CONTEXT* ctx = nullptr;
    PJ* op = nullptr;
    bool opFromGeo = false;

    ~Impl()
    {
        if (op)
            proj_destroy(op);
        if (ctx)
            proj_context_destroy(ctx);
    }

    void run(PJ_DIRECTION direction, std::vector<XYZPoint>& points) const
    {
        if (!op || points.empty())
            return;
        const std::size_t stride = sizeof(XYZPoint);
        proj_errno_reset(op);
        const std::size_t done = proj_trans_generic(op, direction,
            &points[0].x, stride, points.size(),
            &points[0].y, stride, points.size(),
            &points[0].z, stride, points.size(),
            nullptr, 0, 0);
        if (done != points.size())
            throw std::runtime_error("Coordinate transformation failed: " + projError(ctx));
        for (const XYZPoint& p : points) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
                throw std::runtime_error("Coordinate transformation failed: point outside the domain of the system");
        }
    }
    void toGeo(std::vector<XYZPoint>& points) const { run(opFromGeo ? PJ_INV : PJ_FWD, points); }
    void fromGeo(std::vector<XYZPoint>& points) const { run(opFromGeo ? PJ_FWD : PJ_INV, points); }
};

coordSys::coordSys(std::string name, std::string definition, bool geographic, std::unique_ptr<Impl> impl)
    : m_name(std::move(name))
    , m_definition(std::move(definition))
    , m_geographic(geographic)
    , m_impl(std::move(impl))
{
}

coordSys::~coordSys() = default;

void coordSys::transform(const coordSys& target, XYZPoint& point) const
{
    std::vector<XYZPoint> points{point};
    transform(target, points);
    point = points.front();
}

void coordSys::transform(const coordSys& target, std::vector<XYZPoint>& points) const
{
    if (&target == this || target.m_definition == m_definition)
        return;
    m_impl->toGeo(points);
    target.m_impl->fromGeo(points);
}

coordSysFactory& coordSysFactory::getInstance()
{
    static coordSysFactory instance;
    return instance;
}

std::unique_ptr<coordSys> coordSysFactory::createGEO84() const
{
    return createCoordSys(sWgs84Geographic3D);
}

std::unique_ptr<coordSys> coordSysFactory::createMercator(double centralMeridianDeg) const
{
    return createCoordSys("+proj=merc +lon_0=" + formatDeg(centralMeridianDeg)
                          + " +datum=WGS84 +units=m +no_defs +type=crs");
}

std::unique_ptr<coordSys> coordSysFactory::createLSR84(const XYZPoint& anchorDeg) const
{
    const std::string definition = "+proj=pipeline +step +proj=unitconvert +xy_in=deg +xy_out=rad"
                                   " +step +proj=cart +ellps=WGS84"
                                   " +step +proj=topocentric +ellps=WGS84 +lon_0="
        + formatDeg(anchorDeg.x) + " +lat_0=" + formatDeg(anchorDeg.y) + " +h_0=" + formatDeg(anchorDeg.z);
    auto impl = std::make_unique<coordSys::Impl>();
    impl->ctx = proj_context_create();
    proj_log_level(impl->ctx, PJ_LOG_NONE); // failures are reported by exceptions
    impl->op = proj_create(impl->ctx, definition.c_str());
    if (!impl->op)
        throw std::runtime_error("Cannot create the LSR System: " + projError(impl->ctx));
    impl->opFromGeo = true;
    return std::unique_ptr<coordSys>(new coordSys("LSR System", definition, false, std::move(impl)));
}

std::unique_ptr<coordSys> coordSysFactory::createCoordSys(const std::string& definition) const
{
    if (definition.find("+proj=topocentric") != std::string::npos) {
        // The definition string of an LSR system: rebuild it from its anchor.
        auto value = [&](const char* key) {
            const std::size_t at = definition.rfind(key);
            if (at == std::string::npos)
                throw std::runtime_error("Cannot create coordinate system: " + definition);
            return std::stod(definition.substr(at + std::char_traits<char>::length(key)));
        };
        return createLSR84(XYZPoint(value("+lon_0="), value("+lat_0="), value("+h_0=")));
    }

    auto impl = std::make_unique<coordSys::Impl>();
    impl->ctx = proj_context_create();
    proj_log_level(impl->ctx, PJ_LOG_NONE); // failures are reported by exceptions
    PJ* crs = proj_create(impl->ctx, definition.c_str());
    if (!crs)
        throw std::runtime_error("Cannot create coordinate system \"" + definition + "\": " + projError(impl->ctx));
    const PJ_TYPE type = proj_get_type(crs);
    const bool isCrs = type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS
        || type == PJ_TYPE_PROJECTED_CRS || type == PJ_TYPE_COMPOUND_CRS || type == PJ_TYPE_GEOCENTRIC_CRS
        || type == PJ_TYPE_BOUND_CRS || type == PJ_TYPE_OTHER_CRS;
    if (!isCrs) {
        proj_destroy(crs);
        throw std::runtime_error("Cannot create coordinate system \"" + definition + "\": not a coordinate reference system");
    }
    const bool geographic = type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS;
    const char* crsName = proj_get_name(crs);
    std::string name = crsName ? crsName : definition;
    if (definition.rfind("+proj=merc", 0) == 0)
        name = "Mercator";

    if (definition != sWgs84Geographic3D) {
        PJ* wgs84 = proj_create(impl->ctx, sWgs84Geographic3D);
        PJ* op = wgs84 ? proj_create_crs_to_crs_from_pj(impl->ctx, crs, wgs84, nullptr, nullptr) : nullptr;
        if (wgs84)
            proj_destroy(wgs84);
        PJ* normalized = op ? proj_normalize_for_visualization(impl->ctx, op) : nullptr;
        if (op)
            proj_destroy(op);
        if (!normalized) {
            proj_destroy(crs);
            throw std::runtime_error("Cannot create coordinate system \"" + definition + "\": " + projError(impl->ctx));
        }
        impl->op = normalized;
    }
    proj_destroy(crs);
    return std::unique_ptr<coordSys>(new coordSys(name, definition, geographic, std::move(impl)));
}

} // namespace geo
