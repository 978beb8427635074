#include <platform/geo/coordSys.h>
#include <platform/geo/coordSysFactory.h>

#include <proj.h>

#include <cmath>
#include <cstdio>
#include <optional>
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
    /// An LSR system's PROJ pipeline, made on first use: its conversion from
    /// WGS84 is the closed form below, so most LSR systems never need it.
    std::string lazyPipeline;

    void makeLazyOperation()
    {
        if (op || lazyPipeline.empty())
            return;
        ctx = proj_context_create();
        proj_log_level(ctx, PJ_LOG_NONE); // failures are reported by exceptions
        op = proj_create(ctx, lazyPipeline.c_str());
        if (!op)
            throw std::runtime_error("Cannot create the LSR System: " + projError(ctx));
    }

    /// The LSR system's conversion from geographic WGS84 in closed form:
    /// geodetic to Earth-centred coordinates, less the anchor's, turned
    /// into east, north, up at the anchor. It is PROJ's cart and
    /// topocentric steps written out (they agree to well below a
    /// micrometre) and several times faster than the pipeline.
    struct Topocentric {
        double x0 = 0.0, y0 = 0.0, z0 = 0.0; ///< the anchor, Earth-centred
        double east[3]{}, north[3]{}, up[3]{};
    };
    std::optional<Topocentric> topocentric;

    static constexpr double sA = 6378137.0;
    static constexpr double sF = 1.0 / 298.257223563;
    static constexpr double sE2 = sF * (2.0 - sF);
    static constexpr double sDegToRad = 3.14159265358979323846 / 180.0;

    static void earthCentred(double lonDeg, double latDeg, double h, double& x, double& y, double& z)
    {
        const double lat = latDeg * sDegToRad;
        const double lon = lonDeg * sDegToRad;
        const double sinLat = std::sin(lat), cosLat = std::cos(lat);
        const double n = sA / std::sqrt(1.0 - sE2 * sinLat * sinLat);
        x = (n + h) * cosLat * std::cos(lon);
        y = (n + h) * cosLat * std::sin(lon);
        z = (n * (1.0 - sE2) + h) * sinLat;
    }

    void setAnchor(const XYZPoint& anchorDeg)
    {
        Topocentric t;
        earthCentred(anchorDeg.x, anchorDeg.y, anchorDeg.z, t.x0, t.y0, t.z0);
        const double lat = anchorDeg.y * sDegToRad, lon = anchorDeg.x * sDegToRad;
        const double sinLat = std::sin(lat), cosLat = std::cos(lat), sinLon = std::sin(lon), cosLon = std::cos(lon);
        t.east[0] = -sinLon, t.east[1] = cosLon, t.east[2] = 0.0;
        t.north[0] = -sinLat * cosLon, t.north[1] = -sinLat * sinLon, t.north[2] = cosLat;
        t.up[0] = cosLat * cosLon, t.up[1] = cosLat * sinLon, t.up[2] = sinLat;
        topocentric = t;
    }

    void fromGeoClosedForm(std::span<XYZPoint> points) const
    {
        const Topocentric& t = *topocentric;
        for (XYZPoint& p : points) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z) || std::abs(p.y) > 90.0)
                throw std::runtime_error("Coordinate transformation failed: point outside the domain of the system");
            double x = 0.0, y = 0.0, z = 0.0;
            earthCentred(p.x, p.y, p.z, x, y, z);
            x -= t.x0, y -= t.y0, z -= t.z0;
            p = XYZPoint(t.east[0] * x + t.east[1] * y, t.north[0] * x + t.north[1] * y + t.north[2] * z,
                         t.up[0] * x + t.up[1] * y + t.up[2] * z);
        }
    }

    ~Impl()
    {
        if (op)
            proj_destroy(op);
        if (ctx)
            proj_context_destroy(ctx);
    }

    void run(PJ_DIRECTION direction, std::span<XYZPoint> points) const
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
    void toGeo(std::span<XYZPoint> points)
    {
        makeLazyOperation();
        run(opFromGeo ? PJ_INV : PJ_FWD, points);
    }
    void fromGeo(std::span<XYZPoint> points)
    {
        if (topocentric)
            fromGeoClosedForm(points);
        else
            run(opFromGeo ? PJ_FWD : PJ_INV, points);
    }
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
    transform(target, std::span<XYZPoint>(&point, 1));
}

void coordSys::transform(const coordSys& target, std::vector<XYZPoint>& points) const
{
    transform(target, std::span<XYZPoint>(points));
}

void coordSys::transform(const coordSys& target, std::span<XYZPoint> points) const
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
    if (!std::isfinite(anchorDeg.x) || !std::isfinite(anchorDeg.y) || !std::isfinite(anchorDeg.z)
        || std::abs(anchorDeg.y) > 90.0)
        throw std::runtime_error("Cannot create the LSR System: the anchor (" + formatDeg(anchorDeg.x) + ", "
                                 + formatDeg(anchorDeg.y) + ", " + formatDeg(anchorDeg.z)
                                 + ") is not a longitude, latitude and height");
    auto impl = std::make_unique<coordSys::Impl>();
    impl->lazyPipeline = definition;
    impl->opFromGeo = true;
    impl->setAnchor(anchorDeg);
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
    if (definition == sWgs84Geographic3D) // the hub every transform goes through: the identity
        return std::unique_ptr<coordSys>(new coordSys("WGS 84", definition, true, std::move(impl)));
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
    proj_destroy(crs);
    return std::unique_ptr<coordSys>(new coordSys(name, definition, geographic, std::move(impl)));
}

} // namespace geo
