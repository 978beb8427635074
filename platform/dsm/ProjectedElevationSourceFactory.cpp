#include <platform/dsm/ProjectedElevationSourceFactory.h>

#include <platform/dsm/FlatElevationSource.h>
#include <platform/dsm/RasterElevationSource.h>

#include <QDir>
#include <QFile>
#include <QStringList>

namespace dsm {

namespace {

ProjectedElevationSourceFactory sProcessFactory;

} // namespace

ProjectedElevationSourceFactory* ProjectedElevationSourceFactory::instance = &sProcessFactory;

std::unique_ptr<ProjectedElevationSource> ProjectedElevationSourceFactory::getAvailProjectedSource(
    const geo::coordSys& mapping, double xMin, double yMin, double xMax, double yMax,
    util::ProgressInterface* progress) const
{
    if (m_elevationModel.empty()) {
        FlatElevationSource flat(m_flatHeightM);
        return ProjectedElevationSource::build(flat, mapping, xMin, yMin, xMax, yMax, m_gridSpacingM, progress);
    }
    RasterElevationSource raster(m_elevationModel);
    return ProjectedElevationSource::build(raster, mapping, xMin, yMin, xMax, yMax, m_gridSpacingM, progress);
}

std::string ProjectedElevationSourceFactory::findElevationModel(const std::string& folder)
{
    const QDir dir(QFile::decodeName(folder.c_str()));
    const QStringList names = dir.entryList({QStringLiteral("*.tif"), QStringLiteral("*.tiff")},
                                            QDir::Files | QDir::Readable, QDir::Name);
    if (names.isEmpty())
        return {};
    return QFile::encodeName(dir.filePath(names.front())).toStdString();
}

} // namespace dsm
