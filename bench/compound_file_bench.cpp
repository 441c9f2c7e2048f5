/// Documents of objects against the ways in which others keep the same objects, in one run and on one disk.
#include "ratios.h"
#include "storage_peer.h"

#include "compound/compound_file.h"

#include <fmt/format.h>

#include <cstdlib>
#include <map>

namespace quobrix::bench {
namespace {

/// A year of driving is about 18,000 objects: 13 of 18 short, 4 of 18 of some kilobytes, 1 of 18 long; 20 MB in all.
const Objects& objects(std::int64_t count) {
    static std::map<std::int64_t, Objects> made;
    Objects& all = made[count];
    for (std::uint32_t i = static_cast<std::uint32_t>(all.size()); i < count; ++i) {
        const std::size_t size = i % 18 < 13   ? 16 + i * 7 % 185
                                 : i % 18 < 17 ? 300 + i * 13 % 2701
                                               : 4000 + i * 31 % 16001;
        Object& object = all.emplace_back(Object{i, i % 18, Bytes(size)});
        for (std::size_t at = 0; at < size; ++at)
            object.content[at] = static_cast<std::uint8_t>(i * 151 + at * at);
    }
    return all;
}

/// On the disk that QUOBRIX_BENCH_FOLDER names, else in the current folder: not in memory.
std::filesystem::path file(const std::string& name) {
    const char* folder = std::getenv("QUOBRIX_BENCH_FOLDER");
    return std::filesystem::path(folder != nullptr ? folder : ".") / ("bench-" + name);
}

/// What a way can do, the least first.
enum class Knows { Whole, Objects, Changes };

struct Way {
    const char* name;
    std::unique_ptr<StoragePeer> (*make)();
    std::int64_t most; ///< objects; with more it takes minutes
    Knows knows;       ///< only all in one piece; single objects too; and changes them without writing all anew
};
constexpr Way kWays[] = {
    {"document", makeDocumentPeer, 180'000, Knows::Changes},
    {"sqlite", makeSqlitePeer, 180'000, Knows::Changes},
    {"libgsf", makeGsfPeer, 18'000, Knows::Objects},
    {"raw", makeRawPeer, 180'000, Knows::Whole},
};

void create(benchmark::State& state, const Way& way) {
    const auto peer = way.make();
    const auto path = file(way.name);
    peer->prepare(objects(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(path);
        state.ResumeTiming();
        peer->create(path);
    }
    std::filesystem::remove(path);
}

/// What has happened to a file since it was created. Each use has files of its own, so that saving does not wear down
/// those that the others read.
enum class Life { New, Worn, Saved };

/// Ten objects from everywhere, of all sizes, that differ from what they were; over time every object comes.
class Changes {
public:
    explicit Changes(std::int64_t count) : all_(objects(count)) {}
    const Objects& next() {
        for (Object& object : ten_) {
            at_ = (at_ + 7919) % all_.size();
            object = all_[at_];
            object.content.front() ^= 0xFF;
        }
        return ten_;
    }

private:
    const Objects& all_;
    Objects ten_{10};
    std::size_t at_ = 0;
};

/// A file to be read or changed: made once for each way, size and life.
std::filesystem::path fileOf(const Way& way, std::int64_t count, Life life) {
    static std::map<std::string, std::filesystem::path> made;
    const std::string name = fmt::format("{}-{}-{}", way.name, count, int(life));
    auto& path = made[name];
    if (path.empty()) {
        path = file(name);
        std::filesystem::remove(path);
        const auto peer = way.make();
        peer->prepare(objects(count));
        peer->create(path);
        if (life == Life::Worn) { // every object once written anew, ten at a time and far apart
            peer->open(path);
            Changes changes(count);
            for (std::int64_t i = 0; i < count / 10; ++i)
                peer->save(changes.next());
            peer->close();
        }
    }
    return path;
}

void readOne(benchmark::State& state, const Way& way) {
    const auto path = fileOf(way, state.range(0), Life::New);
    const auto peer = way.make();
    for (auto _ : state)
        peer->readOne(path, 1234);
}

void readEverything(benchmark::State& state, const Way& way, Life life) {
    const auto path = fileOf(way, state.range(0), life);
    const auto peer = way.make();
    for (auto _ : state)
        benchmark::DoNotOptimize(peer->readAll(path));
}
void readAll(benchmark::State& state, const Way& way) { readEverything(state, way, Life::New); }
void readWorn(benchmark::State& state, const Way& way) { readEverything(state, way, Life::Worn); }

void saveTen(benchmark::State& state, const Way& way) {
    const auto path = fileOf(way, state.range(0), Life::Saved);
    const auto peer = way.make();
    peer->open(path);
    Changes changes(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        const Objects& changed = changes.next();
        state.ResumeTiming();
        peer->save(changed);
    }
    peer->close();
}

using CopyMember = Result<void> (CompoundFile::*)(File&) const;

void copy(benchmark::State& state, CopyMember member) {
    const auto path = fileOf(kWays[0], state.range(0), Life::New);
    const auto source = *CompoundFile::open(*openFile(path, FileMode::Read));
    const auto target = file("copy");
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(target);
        state.ResumeTiming();
        require(bool(((*source).*member)(**openFile(target, FileMode::Create))), "copy");
    }
    std::filesystem::remove(target);
}

void registerAll() {
    struct Job {
        const char* name;
        void (*run)(benchmark::State&, const Way&);
        Knows needs;
    };
    constexpr Job kJobs[] = {{"create", create, Knows::Whole},
                             {"readOne", readOne, Knows::Objects},
                             {"readAll", readAll, Knows::Whole},
                             {"readWorn", readWorn, Knows::Changes},
                             {"saveTen", saveTen, Knows::Objects}};
    const auto add = [](const std::string& name, std::int64_t most, const auto& run) {
        auto* it = benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond)->UseRealTime();
        for (const std::int64_t count : {1'800, 18'000, 180'000})
            if (count <= most)
                it->Arg(count);
    };
    for (const Job& job : kJobs)
        for (const Way& way : kWays)
            if (way.knows >= job.needs)
                add(fmt::format("{}/{}", job.name, way.name), way.most,
                    [&way, run = job.run](benchmark::State& state) { run(state, way); });
    add("backup/document", 18'000, [](benchmark::State& state) { copy(state, &CompoundFile::copyTo); });
    add("compact/document", 18'000, [](benchmark::State& state) { copy(state, &CompoundFile::compactTo); });
}

const std::vector<Ratio> kRatios = {
    {"Create, to raw write and flush", "create/document/18000", "create/raw/18000", 3},
    {"Create, to SQLite", "create/document/18000", "create/sqlite/18000", 0.4},
    {"Create, to libgsf", "create/document/18000", "create/libgsf/18000"},
    {"Open, read index and one object, to libgsf", "readOne/document/18000", "readOne/libgsf/18000", 0.004},
    {"Open, read index and one object, to SQLite", "readOne/document/18000", "readOne/sqlite/18000"},
    {"Read everything, to raw read", "readAll/document/18000", "readAll/raw/18000"},
    {"Read everything, to SQLite", "readAll/document/18000", "readAll/sqlite/18000", 1},
    {"Read everything, to libgsf", "readAll/document/18000", "readAll/libgsf/18000"},
    {"Read everything, each object saved once since, to SQLite", "readWorn/document/18000", "readWorn/sqlite/18000"},
    {"Save 10 changed objects, to SQLite", "saveTen/document/18000", "saveTen/sqlite/18000", 1},
    {"Save 10 changed objects, to libgsf", "saveTen/document/18000", "saveTen/libgsf/18000", 0.001},
    {"Create 18,000, to 10 times 1,800", "create/document/18000", "create/document/1800", 1, 10},
    {"Create 180,000, to 10 times 18,000", "create/document/180000", "create/document/18000", 1, 10},
    {"The same, SQLite", "create/sqlite/180000", "create/sqlite/18000", 0, 10},
    {"The same, raw", "create/raw/180000", "create/raw/18000", 0, 10},
    {"Open with 18,000, to 10 times 1,800", "readOne/document/18000", "readOne/document/1800", 1, 10},
    {"Open with 180,000, to 10 times 18,000", "readOne/document/180000", "readOne/document/18000", 1, 10},
    {"The same, SQLite", "readOne/sqlite/180000", "readOne/sqlite/18000", 0, 10},
    {"Read all 18,000, to 10 times 1,800", "readAll/document/18000", "readAll/document/1800", 1, 10},
    {"Read all 180,000, to 10 times 18,000", "readAll/document/180000", "readAll/document/18000", 1, 10},
    {"The same, SQLite", "readAll/sqlite/180000", "readAll/sqlite/18000", 0, 10},
    {"The same, raw", "readAll/raw/180000", "readAll/raw/18000", 0, 10},
    {"Save 10 of 18,000, to 10 of 1,800", "saveTen/document/18000", "saveTen/document/1800"},
    {"Save 10 of 180,000, to 10 of 18,000", "saveTen/document/180000", "saveTen/document/18000"},
    {"Backup copy, to raw write and flush", "backup/document/18000", "create/raw/18000"},
    {"Compaction, to raw write and flush", "compact/document/18000", "create/raw/18000"},
};

} // namespace
} // namespace quobrix::bench

int main(int argc, char** argv) {
    quobrix::bench::registerAll();
    return quobrix::bench::runAndCompare(argc, argv, quobrix::bench::kRatios);
}
