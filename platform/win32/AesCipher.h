// The AES of enciphered archive members: a key from the password, a stream from counted blocks, a seal over the data.
#pragma once

#include <windows.h>

#include <bcrypt.h>

#include <cstdint>
#include <string>

namespace korlan {

class AesCipher {
public:
    static constexpr std::size_t kSealSize = 10;                    // stands behind the data
    static constexpr std::size_t HeadSize(std::uint32_t strength) { // stands before it
        return 4 * strength + 4 + kCheckSize;
    }
    // strength: 1 to 3, keys of 128, 192 and 256 bits. head: a salt and two bytes that tell a wrong password.
    AesCipher(std::uint32_t strength, const std::string& head, const std::string& password);
    ~AesCipher();
    AesCipher(const AesCipher&) = delete;
    AesCipher& operator=(const AesCipher&) = delete;

    bool Opened() const { return well_; }
    void Decipher(std::string& bytes); // the next ones
    bool Sealed(const std::string& seal);

private:
    static constexpr std::size_t kCheckSize = 2;
    void NextStream();

    BCRYPT_KEY_HANDLE key_ = nullptr;
    BCRYPT_HASH_HANDLE hash_ = nullptr;
    std::string stream_;
    std::size_t used_ = 0; // bytes of it
    std::uint64_t counter_ = 0;
    bool well_ = false;
};

} // namespace korlan
