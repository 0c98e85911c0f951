// The in-memory tables of a search: built by the catalogue, marked by the comparison, read by the list and the run.
// One copy for the process.
#pragma once

#include "app/base/Settings.h"
#include "app/base/Table.h"
#include "platform/Database.h"
#include "platform/SharedText.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

namespace korlan {

struct FileRecord {
    std::string FileName;
    SharedText FileSize;            // as the catalogue has it
    std::string Filedate;           // D-M-YYYY,H:M:S in UTC
    std::string FileZipName;        // key of the record: the archive's path on the server
    SharedText FilePath;            // destination designation
    SharedText LocalFolder;         // destination folder, ending in "\"; "" unless marked
    std::int32_t UpdateFlag = 0;    // 1 = newer on the server, or missing here
    std::int32_t TransferState = 0; // 1 = the archive is in the temporary folder
    std::int32_t Row = 0;           // of the wizard's list, 0 = not listed

    std::string LocalFile() const { return *LocalFolder + FileName; }     // full path of the installed file
    std::string TempZipFile() const { return InTempFolder(FileZipName); } // where the archive is kept during a run
};

struct SPMember {
    std::int32_t Record = 0;     // its place in FileArray
    std::int32_t UpdateFlag = 0; // 1 = among the files to update
};

struct SPRecord { // one service pack not yet applied
    std::string FileName, FileSize, Filedate, FileZipName, FilePath;
    std::int32_t UpdateFlag = 0; // 1 = recorded as applied
    Table<SPMember> Files;
    bool Read = false; // this search has read its catalogue to the end
};

struct NewFolderRecord {
    std::string FolderName;
    std::string FolderZipName;
};

// Where a key stands first in a table that only grows at its end. It catches up with the table at every look-up.
template <typename Element, std::string Element::*key>
class FirstPlace {
public:
    std::int32_t Find(const Table<Element>& table, const std::string& wanted) { // 0 = nowhere
        for (; indexed_ < table.UpperBound(); ++indexed_) places_.try_emplace(table[indexed_ + 1].*key, indexed_ + 1);
        const auto found = places_.find(wanted);
        return found == places_.end() ? 0 : found->second;
    }
    void Clear() { // to be called when the table is emptied
        indexed_ = 0;
        places_.clear();
    }

private:
    std::int32_t indexed_ = 0;
    std::unordered_map<std::string, std::int32_t> places_;
};

struct FileTables {
    Table<FileRecord> FileArray;
    Table<SPRecord> FileArraySP;
    Table<NewFolderRecord> NewFolderArray;
    FirstPlace<FileRecord, &FileRecord::FileZipName> FileIndex;
    FirstPlace<NewFolderRecord, &NewFolderRecord::FolderZipName> FolderIndex;
    Table<std::string> AppliedSPList;            // names of the service packs recorded as applied
    Table<std::string> AppliedSPCList;           // archive names of the simulation-model files installed
    std::int64_t AppliedSPCount = 0;             // entries of the two lists in the suite INI file; the tables may be
    std::int64_t AppliedSPCCount = 0;            // shorter
    Table<std::string> UpdatedFiles;             // archive names installed by the run, in install order
    std::unique_ptr<Database> CatalogueDatabase; // at most one catalogue open at a time
};

inline FileTables Tables;

} // namespace korlan
