// The border to the suite's library, over the sample library: how hostile files end.
#include "platform/SuiteLibrary.h"

#include "sample/suite/LibraryFile.h"
#include "tests/support/Failing.h"
#include "tests/support/SuitePlace.h"

#include <gmock/gmock.h>

namespace korlan::test {

namespace {

constexpr const char* kFile = "C:\\KORLAN\\LIB\\A.PART";

struct SuiteLibraryTest : testing::Test {
    SuiteLibraryTest() {
        drive.MakeFolders("KORLAN/LIB");
        Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
        UseSuite(drive, KLN_SUITE_SO);
        DB_CreateDataBase();
    }

    // Reads the file in every way there is; the names it holds, none when it is refused.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        std::vector<PartInformation> parts(3);
        const std::int32_t error = ErrorOf([&] { E_GetPartInfo(kFile, parts); });
        const LibraryHandle library = E_OpenLibrary(kFile, kPartLibraryType, 0);
        EXPECT_EQ(library > 0, error == 0) << "both ways agree";
        if (library <= 0) return names;
        for (std::string name; !(name = E_GetLibDirName()).empty();) names.push_back(name);
        E_CloseLibrary(library);
        return names;
    }

    TempDrive drive;
};

} // namespace

TEST_F(SuiteLibraryTest, APathOutsideTheCodePageIsReached) {
    const std::string path = "C:\\KORLAN\\LIB\\Ж.PART";
    drive.Write(path, suite::LibraryBytes({suite::Kind::Part, {{"A", "d", "1"}}}));
    std::vector<PartInformation> parts(1);
    EXPECT_EQ(ErrorOf([&] { E_GetPartInfo(path, parts); }), 0); // on Windows by its short name
    EXPECT_GT(E_OpenLibrary(path, kPartLibraryType, 0), 0);
}

TEST_F(SuiteLibraryTest, HostileFilesAreRefused) {
    // Head of 28 bytes, bodies "12345" and "67" at 28, directory at 35 with entries of 12 + 1 + 1 + 2 and 12 + 1 + 2.
    const std::string good = suite::LibraryBytes({suite::Kind::Part, {{"A", "d", "12345"}, {"B", "", "67"}}});
    const std::pair<std::size_t, std::vector<std::uint32_t>> changes[] = {
        {8, {0, 5}},                          // kind
        {16, {0x7FFFFFFF, 0xFFFFFFFF, 3, 1}}, // count
        {20, {0xFFFFFFF0, 4}},                // directory: past the end, in the head
        {35, {0, 0xFFFFFFFF}},                // body: in the head, past the end
        {51, {34, 30}},                       // in the directory, in the other body
        {39, {0xFFFFFFFF, 8}},                // its length: 4 GB, longer than its place
        {43, {0xFFFFFFFF, 0x00020000}},       // texts of 65535, no name
        {62, {0x00006100}},                   // a name twice: "B" becomes "a"
    };
    drive.Write(kFile, good);
    EXPECT_THAT(Names(), testing::ElementsAre("A", "B"));
    for (const auto& [place, values] : changes) {
        for (const std::uint32_t value : values) {
            std::string bad = good;
            for (std::size_t i = 0; i < 4; ++i) bad[place + i] = static_cast<char>(value >> (8 * i));
            drive.Write(kFile, bad);
            EXPECT_THAT(Names(), testing::IsEmpty()) << place << " " << value;
        }
    }
    for (std::size_t at = 0; at < good.size(); ++at) {
        drive.Write(kFile, good.substr(0, at)); // torn anywhere
        EXPECT_THAT(Names(), testing::IsEmpty()) << at;
        std::string bad = good; // any byte damaged: refused or read, never a crash
        bad[at] = static_cast<char>(~bad[at]);
        drive.Write(kFile, bad);
        EXPECT_LE(Names().size(), 2u);
    }
}

TEST_F(SuiteLibraryTest, TheToolTakesTheLinesOfAnySystem) {
    drive.Write(kFile, "");
    drive.Write("a.txt", "# parts\r\n\r\nA\tP x|y\r\nB\r\nC\tQ\n");
    std::filesystem::path tool = std::filesystem::path(KLN_SUITE_SO).parent_path() / "kln-makelib";
    tool.make_preferred();
    const std::string command = tool.string() + " " + drive.HostPathOf("a.txt") + " " + drive.HostPathOf(kFile);
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::vector<PartInformation> parts(3);
    E_GetPartInfo(kFile, parts);
    EXPECT_EQ(parts[0].descriptor + " " + parts[1].name + parts[2].descriptor, "P x€y BQ");
}

} // namespace korlan::test
