// Databases written are read back whole, by the program's own reader and by the tools of the distribution.
#include "platform/jet/JetWriter.h"
#include "tests/jet/TestDatabases.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

namespace korlan {
namespace {

using namespace test;
using Texts = std::vector<std::string>;

const Texts kColumns = {"FileName", "FilePath", "FileSize", "Filedate", "FileZipName"};

std::vector<Row> AsRead(const std::vector<Texts>& rows) {
    std::vector<Row> cells;
    for (const Texts& row : rows)
        for (cells.emplace_back(); const std::string& text : row)
            cells.back().push_back(text.empty() ? Cell() : Cell(text));
    return cells;
}

std::string ExportedBy(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> block;
    for (std::size_t got = 0; (got = fread(block.data(), 1, block.size(), pipe.get())) > 0;)
        text.append(block.data(), got);
    return text;
}

void ExpectReadBack(const std::vector<Texts>& rows, const char* what) {
    const std::string bytes = jet::Jet3FileOf({"Files", kColumns, rows});
    jet::JetTable table = OpenJetTable(OpenBytes(bytes), "FILES");
    ASSERT_EQ(ReadAll(table), AsRead(rows)) << what;

    const TempDrive drive;
    drive.Write("X.mdb", bytes);
    std::string expected;
    for (const Texts& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) expected += row[i] + (i + 1 < row.size() ? "\t" : "\n");
    EXPECT_EQ(ExportedBy("mdb-ver " + drive.HostPathOf("X.mdb")), "JET3\n");
    EXPECT_EQ(ExportedBy("mdb-tables -1 " + drive.HostPathOf("X.mdb")), "Files\n");
    ASSERT_EQ(ExportedBy("mdb-export -H -Q -d '\t' " + drive.HostPathOf("X.mdb") + " Files"), expected) << what;
}

TEST(JetWriter, WritesWhatReadersRead) {
    ExpectReadBack({}, "no rows");
    ExpectReadBack({{"TESSARY.EXE", "Root", "4321280", "14-3-2003,8:5:0", "TESSARYDOTTEXE.zip"},
                    {"\\Help\\Main", "NEWFOLDER", "", "", "NF_HELP"},
                    {"Größe €.TXT", "\\DOCS\\Übersicht", "1", "1-1-2004,0:0:0", ""}},
                   "a catalogue");
    std::vector<Texts> lengths; // rows around every multiple of 256, where the jump table grows
    for (std::size_t total = 240; total <= 5 * 255; ++total) {
        Texts& row = lengths.emplace_back();
        for (std::size_t i = 0, left = total; i < 5; ++i) {
            row.emplace_back(std::min<std::size_t>(left, 255), static_cast<char>('a' + i));
            left -= row.back().size();
        }
    }
    ExpectReadBack(lengths, "row lengths");
    std::vector<Texts> many; // more pages than a map in a row has bits
    for (int i = 0; i < 40000; ++i)
        many.push_back(
            {"F" + std::to_string(i), "\\LIB", std::string(20, 'x'), "2-3-2004,4:5:6", "Z" + std::to_string(i)});
    ExpectReadBack(many, "many pages");
}

TEST(JetWriter, RefusesWhatTheFormatCannotHold) {
    const auto errorOf = [](const Texts& columns, const std::vector<Texts>& rows) {
        return ErrorOf([&] { jet::Jet3FileOf({"Files", columns, rows}); });
    };
    EXPECT_EQ(errorOf({"A"}, {{std::string(255, 'x')}}), 0);
    EXPECT_EQ(errorOf({"A"}, {{std::string(256, 'x')}}), kErrTextTooLong);
    EXPECT_EQ(errorOf({"A"}, {{"Ж"}}), kErrNotInCodePage);
    EXPECT_EQ(errorOf({"A"}, {{"a", "b"}}), kErrRecordTooLarge);
    EXPECT_EQ(errorOf(Texts(9, "A"), {Texts(9, std::string(255, 'x'))}), kErrRecordTooLarge);
    EXPECT_EQ(errorOf({"A"}, std::vector<Texts>(200000, {std::string(100, 'x')})), kErrDiskIsFull);
}

} // namespace
} // namespace korlan
