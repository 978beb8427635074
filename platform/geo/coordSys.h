#pragma once

#include <platform/geo/XYZPoint.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace geo {

/// A coordinate system. Every system knows how to reach geographic WGS84
/// (longitude, latitude in degrees, ellipsoidal height in metres); a transform
/// between two systems goes through it. Built on PROJ. Instances are made by
/// coordSysFactory and are immutable; a coordSys is not shared between threads.
class coordSys {
public:
    ~coordSys();
    coordSys(const coordSys&) = delete;
    coordSys& operator=(const coordSys&) = delete;

    /// A readable name ("WGS 84", "Mercator", "LSR System", ...).
    const std::string& name() const { return m_name; }
    /// The definition the system was made from: a PROJ string, "EPSG:<code>"
    /// or WKT. Handing it to coordSysFactory::createCoordSys gives the same system.
    const std::string& definition() const { return m_definition; }
    /// True for geographic systems (x longitude, y latitude in degrees).
    bool isGeographic() const { return m_geographic; }

    /// Transforms `point` from this system into `target`, in place.
    /// Throws std::runtime_error when PROJ cannot transform the point.
    void transform(const coordSys& target, XYZPoint& point) const;
    /// Transforms many points at once (one PROJ call per stage).
    void transform(const coordSys& target, std::vector<XYZPoint>& points) const;
    void transform(const coordSys& target, std::span<XYZPoint> points) const;

    /// Whether both systems have the same definition.
    bool operator==(const coordSys& other) const { return m_definition == other.m_definition; }

private:
    friend class coordSysFactory;
    struct Impl;
    coordSys(std::string name, std::string definition, bool geographic, std::unique_ptr<Impl> impl);

    std::string m_name;
    std::string m_definition;
    bool m_geographic;
    std::unique_ptr<Impl> m_impl;
};

} // namespace geo
