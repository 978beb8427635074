// Per-scan-line integration times: the integration-time checks look a value
// up for every scan line of a band (60 000 lines and more), and every band's
// file is read once per validation.

#include <datamodel/timing/ScanLineData.h>

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr std::uint32_t sLines = 60000;

// A band whose integration time changes every 500 lines.
datamodel::ScanLineData makeBand()
{
    datamodel::ScanLineData data(1e-6);
    for (std::uint32_t line = 0; line < sLines; line += 500) {
        const float valueSec = (1000 + (line / 500) % 7 * 50) * 1e-6f;
        data.set(line, valueSec);
        data.set(line + 499, valueSec);
    }
    return data;
}

void BM_ScanLineValueEveryLine(benchmark::State& state)
{
    const datamodel::ScanLineData data = makeBand();
    for (auto _ : state) {
        double sum = 0.0;
        for (std::uint32_t line = 0; line < sLines; ++line)
            sum += data.value(line);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * sLines);
}
BENCHMARK(BM_ScanLineValueEveryLine);

void BM_ScanLineDataRead(benchmark::State& state)
{
    QTemporaryDir dir;
    const std::string path = dir.path().toStdString() + "/band.it";
    datamodel::ScanLineData data = makeBand();
    data.write(path);
    for (auto _ : state) {
        const datamodel::ScanLineData read = datamodel::ScanLineData::read(path, 1e-6);
        benchmark::DoNotOptimize(read.values().size());
    }
}
BENCHMARK(BM_ScanLineDataRead);

} // namespace
