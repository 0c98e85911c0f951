// What the archive libraries of all back ends decide alike: the names that members may have, which outcome outweighs
// which, and what the user has answered once and for all.
#pragma once

#include "platform/ZipLibrary.h"

#include <cstdint>
#include <string>

namespace korlan {

// What an extraction returns.
enum class ZipOutcome : std::int32_t {
    Well = 0,
    Warning = 1,
    NoMethod = 81,
    NoPassword = 82,
    Damaged = 3,
    NoArchive = 9,
    CannotWrite = 50,
};
ZipOutcome Graver(ZipOutcome one, ZipOutcome other);

// Files under way begin with it; what is left of a killed process is known by it, so no member may be called so.
inline constexpr std::string_view kTemporaryMember = ".klnunzip";

// The last component of a member's name, which its file gets, without blanks and dots at its end; "" when no file may
// have it.
std::string FileNameOfMember(const std::string& member);

bool HasParentComponent(const std::string& path); // ".."

// Raises 5 for an option that is set and for lists of names: these libraries know neither.
void RequireNoOptions(const DCL& options, std::int32_t listedNames);

// The questions of one extraction.
class ZipQuestions {
public:
    explicit ZipQuestions(USERFUNCTIONS& functions) : functions_(functions) {}

    bool MayReplace(const std::string& member); // asks until the answer is for all or for none
    // Asks for the member's password unless the user has had enough; false when there is none.
    bool AskPassword(const std::string& member);
    void PasswordFits() { wrongPasswords_ = 0; }
    const std::string& Password() const { return password_; } // the last one given
    bool SkipsPasswords() const { return skipPasswords_; }

private:
    USERFUNCTIONS& functions_;
    bool replaceAll_ = false, replaceNone_ = false, skipPasswords_ = false;
    std::string password_;
    std::int32_t wrongPasswords_ = 0; // since the last one that fitted
};

} // namespace korlan
