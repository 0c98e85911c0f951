// The zip library through its single-call interface: an option record, a callback record, one call an archive.
// Paths are Windows-form. Members land in the extraction folder under their last path component only; one that is
// empty, "." or "..", or holds a colon or a control character, a link or a device member is refused. A member is
// written under a temporary name in the extraction folder, given its own time and renamed: it is absent or whole, never
// torn. Temporary files that a killed process left in a folder go when the next process extracts to it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korlan {

struct DCL { // options; this library knows the flags at 0 only, any other value raises 5
    // ExtractOnlyNewer, SpaceToUnderscore, PromptToOverwrite, fQuiet, ncflag, ntflag, nvflag, nfflag, nzflag, ndflag,
    // noflag, naflag, nZIflag, C_flag, fPrivilege
    std::array<std::int32_t, 15> flags{};
    std::string lpszZipFN;      // the archive
    std::string lpszExtractDir; // the folder its members go to; made when missing, unless ".." is in its path
};

// Answers of the overwrite callback.
inline constexpr std::int32_t kOverwriteNo = 100, kOverwriteYes = 102, kOverwriteAll = 103, kOverwriteNone = 104;

// Answers of the password callback. After a skip, or three wrong passwords in a row, every further member that needs a
// password is left out without a question.
inline constexpr std::int32_t kPasswordGiven = 0, kPasswordSkip = -2;

struct UnzipVersion {
    std::uint32_t structlen = 0;
    std::string version;
};

struct ListedMember {
    std::string name;
    std::uint64_t size = 0, packed = 0;                              // bytes, as the archive says
    std::int32_t year = 0, month = 0, day = 0, hour = 0, minute = 0; // local time of its last change
};

struct USERFUNCTIONS {
    std::function<std::int32_t(std::string_view text)> print;
    std::function<std::int32_t(const std::string& member)> replace; // an existing file: one of the kOverwrite answers
    // Fills `password` (at most maxLength characters); one of the kPassword answers.
    std::function<std::int32_t(std::string& password, std::size_t maxLength, const std::string& member)> password;
    std::function<void(const ListedMember& member)> message; // before a member is extracted
    std::function<void()> service; // after every block written and every member; what it throws ends the extraction
};

// Extracts the whole archive: this library takes no lists of names, both counts are 0. A callback that is not there
// answers No, skips, or is passed over. The library's code, the gravest where there are several: 0 well, 1 a member was
// refused or the archive is empty, 3 archive damaged, 9 no archive, 50 the folder cannot be written (disk full), 81 a
// member was left out for want of a method, 82 for want of its password. 50 ends the extraction, otherwise it goes on
// with the next member.
std::int32_t Wiz_SingleEntryUnzip(std::int32_t includeCount, const std::vector<std::string>& include,
                                  std::int32_t excludeCount, const std::vector<std::string>& exclude,
                                  const DCL& options, USERFUNCTIONS& functions);

void UzpVersion2(UnzipVersion& version);

} // namespace korlan
