// Reading a catalogue of 5,000 files as the program does, by opening the database and asking each row for five columns,
// from a Jet file and from a SQLite file with the same rows. Both are read in turn in one run: the ratio of their times
// (jet_by_sqlite) means something on a busy machine too.
#include "platform/Database.h"

#include <sqlite3.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace korlan {
namespace {

const char* const kColumns[] = {"FileName", "FilePath", "FileSize", "Filedate", "FileZipName"};

std::string WindowsForm(std::string hostPath) {
    std::replace(hostPath.begin(), hostPath.end(), '/', '\\');
    return "Z:" + hostPath;
}

// A check sum of all texts in their order.
std::size_t ReadCatalogue(const std::string& path) {
    std::size_t sum = 0;
    const auto database = OpenDatabase(path, false, false, "");
    const auto rows = database->OpenRecordset("SELECT * FROM Files");
    for (; !rows->Eof(); rows->MoveNext())
        for (const char* column : kColumns) sum = sum * 31 + std::hash<std::string>()(rows->Text(column));
    rows->Close();
    return sum;
}

struct Catalogues {
    std::filesystem::path folder;
    std::string jet, sqlite;

    Catalogues() : jet(WindowsForm(KLN_TEST_DATA "/jet/rows5000.mdb")) {
        std::string name = (std::filesystem::temp_directory_path() / "kln-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
        folder = name;
        Copy((folder / "rows5000.db").string());
        sqlite = WindowsForm((folder / "rows5000.db").string());
        if (ReadCatalogue(jet) != ReadCatalogue(sqlite)) throw std::runtime_error("the two files differ");
    }
    ~Catalogues() { std::filesystem::remove_all(folder); }

    void Copy(const std::string& hostPath) const {
        sqlite3* connection = nullptr;
        if (sqlite3_open(hostPath.c_str(), &connection) != SQLITE_OK ||
            sqlite3_exec(connection,
                         "CREATE TABLE Files (FileName TEXT, FilePath TEXT, FileSize TEXT, Filedate TEXT, "
                         "FileZipName TEXT)",
                         nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error("cannot make " + hostPath);
        sqlite3_close(connection);
        const auto from = OpenDatabase(jet, false, false, "");
        const auto to = OpenDatabase(WindowsForm(hostPath), false, false, "");
        const auto rows = from->OpenRecordset("Files");
        const auto copies = to->OpenRecordset("Files");
        for (; !rows->Eof(); rows->MoveNext()) {
            copies->AddNew();
            for (const char* column : kColumns) copies->SetText(column, rows->Text(column));
            copies->Update();
        }
        copies->Close();
    }
};

double SecondsOf(const std::string& path) {
    const auto start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(ReadCatalogue(path));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void ReadBothKinds(benchmark::State& state) {
    const Catalogues catalogues;
    double jet = 0, sqlite = 0;
    for ([[maybe_unused]] auto _ : state) {
        jet += SecondsOf(catalogues.jet);
        sqlite += SecondsOf(catalogues.sqlite);
    }
    const auto rounds = static_cast<double>(state.iterations());
    state.counters["jet_ms"] = jet / rounds * 1000;
    state.counters["sqlite_ms"] = sqlite / rounds * 1000;
    state.counters["jet_by_sqlite"] = jet / sqlite;
}
BENCHMARK(ReadBothKinds)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace korlan
