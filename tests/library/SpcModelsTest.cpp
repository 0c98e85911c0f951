#include "library/SpcModels.h"

#include "tests/support/Failing.h"
#include "tests/support/Installation.h"
#include "tests/support/ZipWriter.h"

namespace korlan::test {

namespace {

constexpr const char* kArchive = "KORLAN/Temp/sp/M.zip";
constexpr const char* kInstalled = "KORLAN/SYS/M.SPC";
const std::string kModels = std::string("* models \x80\xFF\0 end", 17) + "\n.ENDS"; // bytes of no encoding
const std::string kAppended = "\r\n\r\n\r\n\r\n" + kModels + "\r\n";

class SpcModelsTest : public Installation {
protected:
    SpcModelsTest() {
        drive.Write(kArchive, ZipWriter().Add({.name = "M.SPC", .data = kModels}).Bytes());
        drive.Write(kIni, "[X]\r\n");
        Record("C:\\KORLAN\\SYS\\");
    }
    void Record(const std::string& folder) {
        Tables.FileArray.Clear();
        FileRecord& record = Tables.FileArray.Append({});
        record.FileName = "M.SPC";
        record.FileZipName = "sp/M.zip";
        record.LocalFolder = folder;
    }
    std::int32_t Update() {
        std::int32_t success = 0;
        UpdateSPCFile(success, 1);
        return success;
    }
};

} // namespace

TEST_F(SpcModelsTest, AppendsTheBytesAndRecordsTheArchive) {
    const std::string own = "* the user's own models, no line end";
    drive.Write(kInstalled, own);
    drive.SetMode(kInstalled, 0444);
    drive.Write("KORLAN/Temp/M.SPC", "left over from an earlier run");
    EXPECT_EQ(Update(), 1);
    EXPECT_EQ(drive.Read(kInstalled), own + kAppended);
    EXPECT_FALSE(drive.Exists("KORLAN/Temp/M.SPC"));
    EXPECT_EQ(Update(), 1); // once more in the same run
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "SPC Files are updated...-");
    EXPECT_EQ(drive.Read(kInstalled), own + kAppended + kAppended);
    EXPECT_EQ(drive.Read(kIni), "[X]\r\n[LIVEUPDATESPCFROMWEB]\r\nSPCFILEMDB=1\r\n"
                                "[LIVEUPDATESPCFILEFROMWEB]\r\nnumber=2\r\n1=sp/M.zip\r\n2=sp/M.zip\r\n");
}

TEST_F(SpcModelsTest, ABadArchiveIsRecordedAllTheSame) {
    drive.Write(kInstalled, "own");
    const std::string good = drive.Read(kArchive);
    for (const std::string& bad : {good.substr(0, good.size() - 30), std::string("no archive")}) {
        drive.Write(kArchive, bad);
        const std::int32_t before = Tables.AppliedSPCList.UpperBound();
        EXPECT_EQ(Update(), 1);
        EXPECT_EQ(Tables.AppliedSPCList.UpperBound(), before + 1);
        EXPECT_EQ(ReadIniString("LIVEUPDATESPCFROMWEB", "SPCFILEMDB", ""), "");
        EXPECT_EQ(drive.Read(kInstalled), "own");
    }
    std::filesystem::remove(drive.HostPathOf(kInstalled)); // a new file: the folder's case does not matter
    Record("C:\\KORLAN\\sys\\");
    for (const std::string& archive : {std::string("no archive"), good}) {
        drive.Write(kArchive, archive);
        EXPECT_EQ(Update(), 1);
        EXPECT_EQ(ReadIniString("LIVEUPDATESPCFROMWEB", "SPCFILEMDB", ""), archive == good ? "1" : "");
    }
}

TEST_F(SpcModelsTest, ModelsOfAnySizeAreAppendedWholeOrNotAtAll) {
    const std::string large((16 << 20) + 70'000, 'm'), own(100'000, 'o');
    drive.Write(kArchive, ZipWriter().Add({.name = "M.SPC", .data = large}).Bytes());
    drive.Write(kInstalled, own);
    {
        const FileLimit limit((16 << 20) + 150'000); // met by the second block
        EXPECT_NE(ErrorOf([this] { Update(); }), 0);
    }
    EXPECT_TRUE(drive.Read(kInstalled) == own);
    EXPECT_EQ(Update(), 1);
    EXPECT_TRUE(drive.Read(kInstalled) == own + "\r\n\r\n\r\n\r\n" + large + "\r\n");
}

TEST_F(SpcModelsTest, WhatFails) {
    drive.Write(kInstalled, "own");
    drive.Write(kArchive, ZipWriter().Add({"OTHER.SPC", "x"}).Bytes()); // extracts well, but not the file named
    EXPECT_EQ(ErrorOf([this] { Update(); }), kErrFileNotFound);
    EXPECT_EQ(Tables.AppliedSPCList.UpperBound(), 0);
    EXPECT_EQ(drive.Read(kInstalled), "own");
}

} // namespace korlan::test
