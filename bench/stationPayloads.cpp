// How long the station takes to encode what it publishes as a Sparkplug edge node.
//
// usage: stationPayloads
// Times are processor time of this process, so they hold on a machine that does something else,
// too. Exit status: 0 the goals are met, 1 one is missed.

#include "sparkplug/payload.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

enum { RUNS = 21, BIRTH_METRICS = 1000, BIRTHS_A_RUN = 100, DATA_A_RUN = 100000 };
const qint64 NOW = 1700000000123;

/// A tenth of what a rebirth may take, and a tenth of a core for 10,000 values a second.
const double MOST_BIRTH_US = 10000, MOST_DATA_US = 10;

Metric benchMetric(int number)
{
    Metric metric;
    metric.alias = static_cast<quint64>(number + 1);
    metric.time = NOW - number;
    metric.quality = QualityCode::GOOD;
    if (number % 4 == 0) {
        metric.encodedAs = MetricType::FLOAT;
        metric.value = 21.5F + static_cast<float>(number);
    } else {
        metric.encodedAs = MetricType::INT16;
        metric.value = qint64(-number);
    }
    return metric;
}

Payload benchBirth()
{
    Payload birth;
    birth.time = NOW;
    birth.seq = quint8(0);
    for (int i = 0; i < BIRTH_METRICS; ++i) {
        Metric metric = benchMetric(i);
        metric.name = QString(QLatin1String("boiler/zone %1/temperature")).arg(i);
        metric.type = metric.encodedAs;
        birth.metrics.push_back(metric);
    }
    return birth;
}

Payload benchData()
{
    Payload data;
    data.time = NOW;
    data.seq = quint8(200);
    data.metrics.push_back(benchMetric(4));
    return data;
}

/// @return whether the median of the runs is at most so many microseconds a payload
bool encode(const char* what, const Payload& payload, int payloadsARun, double mostUs)
{
    std::vector<double> times;
    qint64 bytes = 0;
    for (int run = 0; run < RUNS; ++run) {
        const std::clock_t start = std::clock();
        for (int i = 0; i < payloadsARun; ++i)
            bytes += encodedPayload(payload).size();
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        times.push_back(1e6 * seconds / payloadsARun);
    }
    std::sort(times.begin(), times.end());
    std::printf("%-28s %7lld bytes   first quarter %7.2f us, median %7.2f us, longest %7.2f us\n",
                what, static_cast<long long>(bytes / RUNS / payloadsARun), times[RUNS / 4],
                times[RUNS / 2], times.back());
    return times[RUNS / 2] <= mostUs;
}

} // namespace

int main()
{
    const bool isBirthMet =
        encode("NBIRTH with 1,000 metrics", benchBirth(), BIRTHS_A_RUN, MOST_BIRTH_US);
    const bool isDataMet = encode("DDATA with 1 metric", benchData(), DATA_A_RUN, MOST_DATA_US);
    return isBirthMet && isDataMet ? 0 : 1;
}
