#include "platform/zip/ZipRules.h"

#include "platform/RuntimeError.h"
#include "platform/zip/ZipDirectory.h"

#include <algorithm>
#include <array>

namespace korlan {

ZipOutcome Graver(ZipOutcome one, ZipOutcome other) {
    constexpr std::array kOrder{ZipOutcome::Well,       ZipOutcome::Warning, ZipOutcome::NoMethod,
                                ZipOutcome::NoPassword, ZipOutcome::Damaged, ZipOutcome::NoArchive,
                                ZipOutcome::CannotWrite};
    return std::ranges::find(kOrder, one) < std::ranges::find(kOrder, other) ? other : one;
}

std::string FileNameOfMember(const std::string& member) {
    std::string name(std::find_if(member.rbegin(), member.rend(), IsZipSeparator).base(), member.end());
    name.resize(name.find_last_not_of(" .") + 1); // npos + 1 is 0
    const auto refused = [](char c) { return c == ':' || static_cast<unsigned char>(c) < 32; };
    return std::ranges::any_of(name, refused) || name.starts_with(kTemporaryMember) ? std::string() : name;
}

bool HasParentComponent(const std::string& path) {
    for (auto at = path.begin(); at != path.end();) {
        const auto end = std::find_if(at, path.end(), IsZipSeparator);
        if (std::string(at, end) == "..") return true;
        at = end == path.end() ? end : end + 1;
    }
    return false;
}

void RequireNoOptions(const DCL& options, std::int32_t listedNames) {
    const bool plain = std::ranges::count(options.flags, 0) == std::ssize(options.flags) && listedNames == 0;
    if (!plain) throw RuntimeError(kErrInvalidCall);
}

bool ZipQuestions::MayReplace(const std::string& member) {
    if (replaceAll_ || replaceNone_) return replaceAll_;
    const std::int32_t answer = functions_.replace ? functions_.replace(member) : kOverwriteNo;
    replaceAll_ = answer == kOverwriteAll;
    replaceNone_ = answer == kOverwriteNone;
    return replaceAll_ || answer == kOverwriteYes;
}

bool ZipQuestions::AskPassword(const std::string& member) {
    constexpr std::size_t kLongestPassword = 256;   // characters
    constexpr std::int32_t kMostWrongPasswords = 3; // in a row
    if (skipPasswords_) return false;
    password_.clear();
    skipPasswords_ = wrongPasswords_ >= kMostWrongPasswords || !functions_.password ||
                     functions_.password(password_, kLongestPassword, member) != kPasswordGiven;
    ++wrongPasswords_; // until it has opened the member
    return !skipPasswords_;
}

} // namespace korlan
