// Libraries and models through the whole wizard: the part index, the search sequences, the requests to the suite.
#include "library/PartDatabase.h"
#include "sample/suite/LibraryFile.h"
#include "tests/support/ZipWriter.h"
#include "tests/system/WizardFixture.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <memory>

namespace korlan {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class LibrariesTest : public test::WizardFixture {
protected:
    using Connection = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

    Connection OpenIndex() const {
        sqlite3* index = nullptr;
        sqlite3_open((sample.Program() / "LIB" / "Parts.abd").c_str(), &index);
        return {index, sqlite3_close};
    }
    // The first column of every row, as text.
    std::vector<std::string> Index(const std::string& sql) const {
        std::vector<std::string> values;
        const Connection index = OpenIndex();
        const auto keep = [](void* into, int, char** row, char**) {
            static_cast<std::vector<std::string>*>(into)->emplace_back(row[0]);
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(index.get(), sql.c_str(), keep, &values, nullptr), SQLITE_OK) << sql;
        return values;
    }
    std::vector<std::string> PartsOf(const std::string& library) const {
        return Index("SELECT Name || ' ' || SSQNum FROM PartFields WHERE Library = '" + library + "' ORDER BY Name");
    }
    void ReplaceInIni(const std::string& from, const std::string& to) const {
        std::string ini = sample.Ini();
        const auto at = ini.find(from);
        ASSERT_NE(at, std::string::npos) << from << " in\n" << ini;
        std::ofstream(sample.Program() / "SYS" / "TESSARY.INI", std::ios::binary) << ini.replace(at, from.size(), to);
    }
    void MakeOld(const std::string& file) const {
        const std::chrono::sys_seconds longAgo = std::chrono::sys_days(std::chrono::year(2000) / 1 / 1);
        fs::last_write_time(sample.Program() / file, std::chrono::file_clock::from_sys(longAgo));
    }
    // The values of a section of the suite INI file under 1, 2, 3 ...
    static std::vector<std::string> List(const char* section) {
        std::vector<std::string> values;
        for (std::string value; !(value = ReadIniString(section, std::to_string(values.size() + 1), "")).empty();)
            values.push_back(value);
        return values;
    }
    // A search, and an update by the files of these names alone.
    static void Install(const std::vector<std::string>& names) {
        Start();
        ListView& list = frmUpdate.lvwFilesList;
        for (std::int32_t row = 1; row <= list.Count(); ++row)
            list.SetChecked(row, std::find(names.begin(), names.end(), list.Row(row).text) != names.end());
        Press("cmdUpdate");
        EXPECT_EQ(Caption("cmdCancel"), "Next");
        for (const std::string& name : names) EXPECT_EQ(list.Row(RowOf(name)).subItems[2], "Updated") << name;
    }
};

TEST_F(LibrariesTest, AReinstalledPartLibraryLeavesNoStaleRows) {
    Install({"TTL74.PART"});
    EXPECT_EQ(PartsOf("TTL74.PART").size(), 13u);

    const std::string fields(9, '\x80');
    const suite::LibraryFile fewer{suite::Kind::Part,
                                   {{"74LS005", "SO8 a" + fields, ""}, {"74NEW", "SO8 b" + fields, ""}}};
    std::ofstream(sample.Served() / "TTL74DOTTPART.zip", std::ios::binary)
        << test::ZipWriter().Add({.name = "TTL74.PART", .data = suite::LibraryBytes(fewer)}).Bytes();
    std::ofstream(sample.Program() / "Temp" / "TTL74DOTTPART.zip") << "no archive, left over";
    MakeOld("LIB/TTL74.PART");
    Install({"TTL74.PART"});
    EXPECT_THAT(PartsOf("TTL74.PART"), ElementsAre("74LS005 1", "74NEW 1"));
}

TEST_F(LibrariesTest, AnInstallationOfVersion120KeepsItsIndex) {
    ReplaceInIni("Ver=1.61", "Ver= 1.20 ");
    const auto before = Index("SELECT Library || Name || SSQNum FROM PartFields");
    Install({"TTL74.PART", "MEMORY.PART"});
    EXPECT_EQ(Index("SELECT Library || Name || SSQNum FROM PartFields"), before);
    EXPECT_TRUE(fs::exists(sample.Program() / "LIB" / "MEMORY.PART"));
}

TEST_F(LibrariesTest, ANewLibraryTakesTheNextPlaceInEachList) {
    ReplaceInIni("1=TTL74.PART\r\n", "1=ttl74.Part\r\n2=OWN.PART\r\n"); // the flags stay one short
    Install({"TTL74.PART", "MEMORY.PART", "TTL74.SYMBOL", "DIL.PACKAGE", "SOIC.PACKAGE", "BOARD.PADSTACK"});
    EXPECT_THAT(List("DEVLIBS"), ElementsAre("ttl74.Part", "OWN.PART", "MEMORY.PART"));
    EXPECT_THAT(List("KLN_DEVLIBS"), ElementsAre("TTL74.PART,1", "MEMORY.PART,1"));
    EXPECT_THAT(List("KLN_SCHLIBS"), ElementsAre("TTL74.SYMBOL,1"));
    EXPECT_THAT(List("KLN_LAYLIBS"), ElementsAre("DIL.PACKAGE,1", "SOIC.PACKAGE,1"));
    EXPECT_THAT(List("KLN_PADLIBS"), ElementsAre("BOARD.PADSTACK,1"));
    EXPECT_THAT(Index("SELECT DISTINCT SSQNum FROM PartFields WHERE Library = 'MEMORY.PART'"), ElementsAre("3"));
}

TEST_F(LibrariesTest, AModelArchiveInstalledOnceIsNeverOfferedAgain) {
    Start();
    Press("cmdUpdate");
    EXPECT_EQ(Caption("cmdCancel"), "Next");
    ForgetAppliedPacks();
    for (const char* file : {"KDS_CML/OPAMP.SPC", "KDS_CML/DIODE.SPC", "TESSARY.EXE"}) MakeOld(file);
    fs::remove(sample.Program() / "KDS_MOD" / "BIPOLAR.SPC");
    Start();
    ASSERT_EQ(frmUpdate.lvwFilesList.Count(), 1);
    EXPECT_EQ(frmUpdate.lvwFilesList.Row(1).text, "TESSARY.EXE");
    EXPECT_TRUE(sample.Logged("unmarked: "));
}

// The folder of the models comes from KDScml here and is compared with SysDir: a replaced file minds the case, a new
// one does not.
TEST_F(LibrariesTest, TheSuiteIsAskedToRebuildItsModelIndex) {
    const std::tuple<std::string, std::string, bool> cases[] = {{"c:\\Korlan\\kds_cml", "OPAMP.SPC", false},
                                                                {"C:\\KORLAN\\KDS_CML", "OPAMP.SPC", true},
                                                                {"C:\\KORLAN\\SYS", "BIPOLAR.SPC", false}};
    std::string sysDir = "SysDir=C:\\KORLAN\\SYS\r\n";
    for (const auto& [folder, file, requested] : cases) {
        const std::string before = std::exchange(sysDir, "SysDir=" + folder + "\r\n");
        ReplaceInIni(before, sysDir);
        MakeOld("KDS_CML/OPAMP.SPC");
        Install({file});
        EXPECT_EQ(ReadIniString("LIVEUPDATESPCFROMWEB", "SPCFILEMDB", "-"), requested ? "1" : "-") << folder << file;
        if (requested) ReplaceInIni("[LIVEUPDATESPCFROMWEB]", "[OLD]");
        ReplaceInIni("[LIVEUPDATESPCFILEFROMWEB]", "[OLD]");
    }
}

TEST_F(LibrariesTest, ALockedIndexEndsInRetry) {
    ASSERT_EQ(sample.Compare("snapshot"), 0);
    const auto before = PartsOf("TTL74.PART");
    Connection suite = OpenIndex();
    ASSERT_EQ(sqlite3_exec(suite.get(), "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    Start();
    indexPatience = std::chrono::milliseconds(0);
    Press("cmdUpdate");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "LiveUpdate Failed.Click Retry to try again");
    suite.reset();
    EXPECT_EQ(PartsOf("TTL74.PART"), before);
    // Kept: the error of the install pass still counts at the record where the download pass stands, the last one; the
    // next Retry therefore only drops its archive, and the one after fetches it and installs.
    Press("CmdRetry");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update failed.Click Retry to try again");
    Press("CmdRetry");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update completed Successfully");
    EXPECT_EQ(PartsOf("TTL74.PART").size(), 13u);
    EXPECT_EQ(sample.Compare("report"), 0);
}

} // namespace
} // namespace korlan
