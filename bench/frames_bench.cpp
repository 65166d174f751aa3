// Frames, built and parsed. The line carries 3,840 bytes a second: "line_multiple" says how many times that is.
#include "source/TALV_Extension/TALV_MessageFactory.h"
#include <benchmark/benchmark.h>
#include <cstring>
#include <vector>

using namespace TALV;

namespace {
constexpr double kLineBytesPerSecond = 3840;
constexpr unsigned char kGainReport[] = {0x0C, 0xA0, 5, 0, 0x48, 0x3C, 0x32, 0x28, 0x1E, 0x14, 0x0A, 0x00, 0x40};

MessagePrm zeroed() {
    MessagePrm prm;
    std::memset(&prm, 0, sizeof(prm));
    return prm;
}

void countFrames(benchmark::State& state, size_t frameSize) {
    const auto frames = double(state.iterations());
    state.SetItemsProcessed(state.iterations());
    state.counters["line_multiple"] =
        benchmark::Counter(frames * double(frameSize) / kLineBytesPerSecond, benchmark::Counter::kIsRate);
}

/** Keeps a backlog in the container, which the first frame of each round is taken from and put back behind. */
void parseBehind(benchmark::State& state, size_t backlogBytes) {
    TALV_MessageFactory::clearMessageContainer();
    unsigned char none[1];
    std::vector<unsigned char> backlog;
    while (backlog.size() + sizeof(kGainReport) <= backlogBytes)
        backlog.insert(backlog.end(), std::begin(kGainReport), std::end(kGainReport));
    TALV_MessageFactory::ajustmentMessage(backlog.data(), int32_t(backlog.size()), none, 0);
    for (auto _ : state) {
        MessagePrm prm = zeroed();
        TALV_MessageFactory::parseMessage(kGainReport, sizeof(kGainReport), prm);
        if (prm.type != kMessageReqGain)
            state.SkipWithError("not parsed");
    }
    countFrames(state, sizeof(kGainReport));
    TALV_MessageFactory::clearMessageContainer();
}
}  // namespace

void BuildOneGain(benchmark::State& state) {
    MessagePrm prm = zeroed();
    prm.type = kMessageGain;
    prm.devId = 1;
    prm.gainStart = 3;
    prm.gainCount = 1;
    unsigned char frame[16];
    for (auto _ : state) {
        benchmark::DoNotOptimize(prm);
        benchmark::DoNotOptimize(TALV_MessageFactory::createMessage(prm, frame, sizeof(frame)));
        benchmark::ClobberMemory();
    }
    countFrames(state, 6);
}
BENCHMARK(BuildOneGain);

void ParseGainReport(benchmark::State& state) {
    parseBehind(state, 0);
}
BENCHMARK(ParseGainReport);

void ParseGainReport_4KBacklog(benchmark::State& state) {
    parseBehind(state, 4096);
}
BENCHMARK(ParseGainReport_4KBacklog);

/** 4 KB that came at once, taken out to the last frame; time per frame. */
void DrainBacklog_4K(benchmark::State& state) {
    std::vector<unsigned char> backlog;
    while (backlog.size() + sizeof(kGainReport) <= 4096)
        backlog.insert(backlog.end(), std::begin(kGainReport), std::end(kGainReport));
    const size_t frames = backlog.size() / sizeof(kGainReport);
    for (auto _ : state) {
        MessagePrm prm = zeroed();
        TALV_MessageFactory::parseMessage(backlog.data(), int32_t(backlog.size()), prm);
        for (size_t i = 1; i < frames; ++i)
            TALV_MessageFactory::parseMessage(backlog.data(), 0, prm);
        benchmark::DoNotOptimize(prm);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(frames));
}
BENCHMARK(DrainBacklog_4K);

/** The same report in thirteen calls. */
void ParseGainReport_ByteByByte(benchmark::State& state) {
    TALV_MessageFactory::clearMessageContainer();
    for (auto _ : state) {
        MessagePrm prm = zeroed();
        for (const unsigned char& byte : kGainReport)
            TALV_MessageFactory::parseMessage(&byte, 1, prm);
        benchmark::DoNotOptimize(prm);
    }
    countFrames(state, sizeof(kGainReport));
}
BENCHMARK(ParseGainReport_ByteByByte);
