#include "document/compound_file.h"

#include "platform/file_system.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

namespace quobrix {
namespace {

/// A year of driving is about 18,000 objects: 13 of 18 short, 4 of 18 of some kilobytes, 1 of 18 long; 20 MB in all.
Bytes object(std::int64_t index) {
    const auto number = static_cast<std::size_t>(index);
    const std::size_t size = number % 18 < 13   ? 16 + number * 7 % 185
                             : number % 18 < 17 ? 300 + number * 13 % 2701
                                                : 4000 + number * 31 % 16001;
    return Bytes(size, static_cast<std::uint8_t>(number));
}

/// On the disk that QUOBRIX_BENCH_FOLDER names, else in the current folder: not in memory.
std::filesystem::path benchFile() {
    const char* folder = std::getenv("QUOBRIX_BENCH_FOLDER");
    return std::filesystem::path(folder != nullptr ? folder : ".") / "compound_file_bench.car";
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

void createFile(std::int64_t count) {
    std::filesystem::remove(benchFile());
    auto file = CompoundFile::create(*openFile(benchFile(), FileMode::Create));
    for (std::int64_t i = 0; i < count; ++i) {
        if (i % 3000 == 1)
            require(bool((*file)->spill())); // as a document does, to bound its memory
        (*file)->write(std::to_string(i), object(i));
    }
    require(bool((*file)->commit()));
}

std::unique_ptr<CompoundFile> openBenchFile(FileMode mode) { return *CompoundFile::open(*openFile(benchFile(), mode)); }

void create(benchmark::State& state) {
    for (auto _ : state)
        createFile(state.range(0));
}

void openAndReadSome(benchmark::State& state) {
    createFile(state.range(0));
    for (auto _ : state) {
        const auto file = openBenchFile(FileMode::Read);
        for (const char* name : {"1", "2", "3", "4", "5", "1234"})
            benchmark::DoNotOptimize(*file->read(name));
    }
}

void readAll(benchmark::State& state) {
    createFile(state.range(0));
    for (auto _ : state) {
        const auto file = openBenchFile(FileMode::Read);
        for (std::int64_t i = 0; i < state.range(0); ++i)
            benchmark::DoNotOptimize(*file->read(std::to_string(i)));
    }
}

void saveTen(benchmark::State& state) {
    createFile(state.range(0));
    const auto file = openBenchFile(FileMode::ReadWrite);
    std::int64_t next = 0;
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i) {
            next = (next + 7919) % state.range(0);
            file->write(std::to_string(next), object(next));
        }
        require(bool(file->commit()));
    }
    state.counters["fileBytes"] = static_cast<double>(file->space().fileBytes);
}

/// The limit: the same bytes in one write, and a flush.
void rawWrite(benchmark::State& state) {
    Bytes bytes;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const Bytes content = object(i);
        bytes.insert(bytes.end(), content.begin(), content.end());
    }
    for (auto _ : state) {
        std::filesystem::remove(benchFile());
        const auto file = *openFile(benchFile(), FileMode::Create);
        require(bool(file->writeAt(0, bytes)) && bool(file->flush()));
    }
}

#define QUOBRIX_SIZES Unit(benchmark::kMillisecond)->UseRealTime()->Arg(1800)->Arg(18000)->Arg(180000)
BENCHMARK(rawWrite)->QUOBRIX_SIZES;
BENCHMARK(create)->QUOBRIX_SIZES;
BENCHMARK(openAndReadSome)->QUOBRIX_SIZES;
BENCHMARK(readAll)->QUOBRIX_SIZES;
BENCHMARK(saveTen)->QUOBRIX_SIZES;

} // namespace
} // namespace quobrix

BENCHMARK_MAIN();
