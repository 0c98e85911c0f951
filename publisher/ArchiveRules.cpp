// The archive behind a row: there, of stated length, whole, and holding the file of the row and nothing else.
#include "app/base/Paths.h"
#include "app/base/TextHelpers.h"
#include "platform/zip/ZipRules.h"
#include "publisher/ArchiveFile.h"
#include "publisher/Catalogue.h"
#include "publisher/Progress.h"
#include "publisher/RowRules.h"

#include <limits>
#include <map>
#include <set>

namespace korlan::publisher {

namespace {

constexpr const char* kRunFails = ": every update that includes it fails, and none of its other files is installed";

// What is known of an archive, for all rows that name it.
struct Looked {
    Fetched fetched;
    ArchiveFacts facts;
};

Looked Look(Server& server, const std::string& name) {
    Looked looked{server.Get(name), {}};
    if (!looked.fetched.file.empty()) looked.facts = ReadArchive(looked.fetched.file);
    server.Drop(looked.fetched);
    return looked;
}

class ArchiveOfRow {
public:
    ArchiveOfRow(Place place, const CatalogueRow& row, const Looked& looked, Findings& findings)
        : place_(std::move(place)), row_(row), looked_(looked), findings_(findings) {}

    void Check() const {
        if (!CheckTransfer()) return;
        if (!looked_.facts.damage.empty())
            return Error("archive-damaged",
                         looked_.facts.damage + ": the installed file is deleted and nothing takes its place");
        CheckKinds();
        const ZipMember* member = OwnMember();
        if (member == nullptr)
            return Error("other-file", "does not hold " + row_.FileName + ": the installed one is " +
                                           "deleted and nothing takes its place");
        CheckTime(*member);
        if (row_.FileSize != std::to_string(member->size))
            Warning("size",
                    "holds " + std::to_string(member->size) + " bytes, and the list shows \"" + row_.FileSize + "\"");
    }

private:
    void Error(const char* rule, const std::string& text) const {
        findings_.Error(place_, rule, row_.FileZipName + " " + text);
    }
    void Warning(const char* rule, const std::string& text) const {
        findings_.Warning(place_, rule, row_.FileZipName + " " + text);
    }

    bool CheckTransfer() const {
        const Fetched& fetched = looked_.fetched;
        if (fetched.file.empty())
            Error("archive-missing", "cannot be had, " + fetched.problem + kRunFails);
        else if (fetched.length < 0)
            Error("no-length", std::string("comes without Content-Length") + kRunFails);
        else if (fetched.length == 0 || fetched.length > std::numeric_limits<std::int32_t>::max())
            Error("length", "is empty or larger than 2 GB" + std::string(kRunFails));
        else if (static_cast<std::uintmax_t>(fetched.length) != fetched.received)
            Error("length", "comes with " + std::to_string(fetched.received) + " bytes instead of " +
                                std::to_string(fetched.length) + kRunFails);
        else
            return true;
        return false;
    }

    void CheckKinds() const {
        std::set<std::string> names;
        for (const ZipMember& member : looked_.facts.members) {
            const std::string name = FileNameOfMember(member.name);
            if (member.kind == ZipMember::Kind::NoFile)
                Warning("link", "holds " + member.name + ", a link or a device, which is not unpacked");
            else if (member.kind == ZipMember::Kind::Folder || name.empty())
                Warning("folder", "holds " + member.name + ", a folder or a name that is not unpacked");
            else if (member.encrypted)
                Error("password", "asks the user for a password");
            else if (!names.insert(UpperCase(name)).second)
                Error("two-members", "holds " + name + " twice: the user is asked which one to keep");
            else if (UpperCase(name) != UpperCase(row_.FileName) && OwnMember() != nullptr)
                Warning("more-files", "also holds " + name + ", which is installed unasked");
        }
    }

    const ZipMember* OwnMember() const {
        for (const ZipMember& member : looked_.facts.members)
            if (member.kind == ZipMember::Kind::File &&
                UpperCase(FileNameOfMember(member.name)) == UpperCase(row_.FileName))
                return &member;
        return nullptr;
    }

    void CheckTime(const ZipMember& member) const {
        const std::string date = DateTextOf(member.modified);
        if (!member.inUtc)
            Warning("local-time", "gives the time of its file without a time zone: it differs from machine to machine");
        else if (date == Trim(row_.Filedate))
            return;
        else if (!SameMinute(date, row_.Filedate))
            Error("other-time", "holds its file with the time " + date + " instead of " + row_.Filedate +
                                    ": it is offered again, or hides the next update");
        else
            Warning("other-second", "holds its file with the time " + date + " instead of " + row_.Filedate +
                                        ": an interrupted update fetches it once more");
    }

    Place place_;
    const CatalogueRow& row_;
    const Looked& looked_;
    Findings& findings_;
};

} // namespace

void CheckArchives(Server& server, const std::vector<PublishedPack>& packs, Findings& findings) {
    std::size_t all = 0, done = 0;
    for (const PublishedPack& pack : packs) all += pack.rows.size();
    const Progress progress("checking");
    std::map<std::string, Looked> known;
    for (const PublishedPack& pack : packs) {
        for (std::size_t i = 0; i < pack.rows.size(); ++i) {
            const CatalogueRow& row = pack.rows[i];
            progress.At(++done, all, row.FileZipName);
            if (row.IsFolder() || row.FileZipName.empty() || !StaysInFolder(row.FileZipName)) continue;
            auto found = known.find(row.FileZipName);
            if (found == known.end()) found = known.emplace(row.FileZipName, Look(server, row.FileZipName)).first;
            ArchiveOfRow({pack.name, static_cast<std::int32_t>(i + 1)}, row, found->second, findings).Check();
        }
    }
}

} // namespace korlan::publisher
