// Parsing band info files: a session discovery opens one per band per take
// (hundreds per flight), and angles are parsed for every start and stop.

#include <datamodel/model/InfoFile.h>

#include <platform/util/XmlNesting_p.h>

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fstream>

namespace {

const char* const sInfoText =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<band_info><sensor_serialnumber>2004</sensor_serialnumber><sensor_type>ZEL</sensor_type>"
    "<ccd_id name=\"PANF28A\"/><line_number>12</line_number><line_label>L12</line_label>"
    "<flight_start><time>7 March 2009, 09:00:00</time></flight_start>"
    "<start><time>7 March 2009, 10:04:31</time><longitude>-12:30:15.5</longitude>"
    "<latitude>47:10:00</latitude><altitude>1000</altitude></start>"
    "<stop><time>7 March 2009, 10:06:31</time><longitude>-12:20:15.5</longitude>"
    "<latitude>47:10:00</latitude><altitude>1000</altitude></stop>"
    "<int_time>1.25</int_time><CAMERA_TIME_FILE>L12_PANF28A.ct</CAMERA_TIME_FILE>"
    "<PIXEL_FILE>L12_PANF28A.lri</PIXEL_FILE></band_info>\n";

void BM_InfoFileParse(benchmark::State& state)
{
    QTemporaryDir dir;
    const std::string path = dir.path().toStdString() + "/L12_PANF28A.info";
    std::ofstream(path) << sInfoText;
    for (auto _ : state) {
        datamodel::InfoFile info(path, datamodel::InfoFile::STRIPNAMEREGEX);
        benchmark::DoNotOptimize(info.startPos());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_InfoFileParse);

// The nesting check that every XML reader makes before it builds a DOM: its
// share of a parse.
void BM_XmlNestingCheck(benchmark::State& state)
{
    const QByteArray content(sInfoText);
    const QString name = QStringLiteral("L12_PANF28A.info");
    for (auto _ : state)
        benchmark::DoNotOptimize(util::XmlNesting::error(content, name));
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * content.size());
}
BENCHMARK(BM_XmlNestingCheck);

void BM_AngleFromString(benchmark::State& state)
{
    const QString text = QStringLiteral("-12:30:15.5");
    double value = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(datamodel::InfoFile::angleFromString(text, value));
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AngleFromString);

} // namespace
