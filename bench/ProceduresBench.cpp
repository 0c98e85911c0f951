// Procedures against something else in turns: each benchmark runs both once, its counter "ratio" is the first one's
// time by the second one's, and its label is the row of the table that scripts/bench prints. Works in C:\procedures of
// the drives that script has laid out: DATA holds a file for each row of the comparison, TEMP the archives of the
// extraction.
#include "app/base/Settings.h"
#include "catalogue/AppliedPacks.h"
#include "catalogue/Comparison.h"
#include "catalogue/FileTables.h"
#include "transfer/modZip.h"

#include <spawn.h>
#include <sys/wait.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace korlan {
namespace {

const std::string kFolder = "C:\\procedures\\";

std::string HostFolder() {
    return std::string(std::getenv("KLN_DRIVES")) + "/c:/procedures/";
}

void Require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

template <typename Work>
double SecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <typename Ours, typename Other>
void Compare(benchmark::State& state, const std::string& row, Ours ours, Other other) {
    double first = 0, second = 0;
    for ([[maybe_unused]] auto _ : state) {
        first += SecondsOf(ours);
        second += SecondsOf(other);
    }
    state.counters["ratio"] = first / second;
    state.SetLabel(row);
}

// --- extraction ---

std::string EmptyFolder(const char* name) {
    std::filesystem::remove_all(HostFolder() + name);
    std::filesystem::create_directory(HostFolder() + name);
    return name;
}

void ExtractAll(int count) {
    std::string folder = kFolder + EmptyFolder("ours");
    for (int k = 1; k <= count; ++k) {
        std::string archive = kFolder + "Temp\\F" + std::to_string(k) + ".ZIP";
        std::int32_t completed = 0, result = 1;
        Unzip(completed, k, archive, folder, result);
        Require(completed == 1 && result == 0, "an extraction failed");
    }
}

void ExtractAllByProcesses(int count) {
    const std::string folder = HostFolder() + EmptyFolder("theirs");
    for (int k = 1; k <= count; ++k) {
        const std::string archive = HostFolder() + "Temp/F" + std::to_string(k) + ".ZIP";
        const char* const arguments[] = {"bsdtar", "-xf", archive.c_str(), "-C", folder.c_str(), nullptr};
        pid_t child = 0;
        int status = 1;
        posix_spawnp(&child, arguments[0], nullptr, nullptr, const_cast<char* const*>(arguments), environ);
        Require(waitpid(child, &status, 0) == child && status == 0, "bsdtar failed");
    }
}

void Extraction(benchmark::State& state) {
    const int count = std::atoi(std::getenv("KLN_ARCHIVES"));
    Compare(
        state,
        "extraction alone of " + std::to_string(count) + " x 20 KB | `bsdtar -xf`, one process each | 0.3 | 0.15",
        [&] { ExtractAll(count); }, [&] { ExtractAllByProcesses(count); });
}
BENCHMARK(Extraction)->Iterations(1);

// --- comparison ---

constexpr int kInstalled = 50000;

void CompareWith(const char* start, const char* end) {
    Tables.FileArray.Clear();
    for (int k = 1; k <= kInstalled; ++k) {
        FileRecord& record = Tables.FileArray.Append({});
        record.FileName = start + std::to_string(k) + end;
        record.FilePath = "\\SYS";
        record.Filedate = "5-3-2004,9:7:12";
    }
    CompareUpdatableFiles();
    const auto found = Tables.FileArray[kInstalled];
    Require(found.UpdateFlag == 0, "the last file was not found");
}

void Comparison(benchmark::State& state) {
    Settings.SysDir = kFolder + "DATA";
    Compare(
        state, "comparison in a folder of 50,000 entries, names in another case | exact spelling | 1.5 | 1.1",
        [] { CompareWith("f", ".dat"); }, [] { CompareWith("F", ".DAT"); });
}
BENCHMARK(Comparison)->Iterations(1);

// --- lists of the INI file ---

constexpr int kNewPacks = 10;

void WriteLists(int entries) {
    std::ofstream file(HostFolder() + "LISTS.INI");
    for (const char* section : {"LIVEUPDATEFROMWEB", "LIVEUPDATESPCFILEFROMWEB"}) {
        file << "[" << section << "]\r\nNumber=" << entries << "\r\n";
        for (int k = 1; k <= entries; ++k) file << k << "=PACK" << k << ".MDB\r\n";
    }
}

void ReadAndExtendLists(int entries) {
    IniWebR();
    Require(Tables.AppliedSPList.UpperBound() == entries, "the list was not read");
    Tables.FileArraySP.Clear();
    for (int k = 1; k <= kNewPacks; ++k) Tables.FileArraySP.Append({}).FileName = "NEW" + std::to_string(k) + ".MDB";
    UpdateIniFile();
}

void Lists(benchmark::State& state) {
    Settings.IniFilePath = kFolder + "LISTS.INI";
    double seconds[2] = {0, 0};
    const int lengths[2] = {10000, 1000};
    for ([[maybe_unused]] auto _ : state) {
        for (int i = 0; i < 2; ++i) {
            WriteLists(lengths[i]);
            seconds[i] += SecondsOf([&] { ReadAndExtendLists(lengths[i]); });
        }
    }
    state.counters["ratio"] = seconds[0] / seconds[1];
    state.SetLabel("INI lists of 10,000 entries, read and extended | 1,000 entries | 12 | 10.5");
}
BENCHMARK(Lists)->Iterations(1);

} // namespace
} // namespace korlan
