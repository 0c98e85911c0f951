#include "platform/win32/AesCipher.h"

namespace korlan {
namespace {

UCHAR* Bytes(const std::string& bytes) { // the system's calls take no const
    return reinterpret_cast<UCHAR*>(const_cast<char*>(bytes.data()));
}

ULONG Size(const std::string& bytes) {
    return static_cast<ULONG>(bytes.size());
}

BCRYPT_ALG_HANDLE Algorithm(const wchar_t* name, ULONG flags) { // for the life of the process
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCryptOpenAlgorithmProvider(&algorithm, name, nullptr, flags);
    return algorithm;
}

BCRYPT_ALG_HANDLE SealAlgorithm() {
    static const BCRYPT_ALG_HANDLE algorithm = Algorithm(BCRYPT_SHA1_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG);
    return algorithm;
}

BCRYPT_ALG_HANDLE BlockAlgorithm() {
    static const BCRYPT_ALG_HANDLE algorithm = [] {
        wchar_t mode[] = BCRYPT_CHAIN_MODE_ECB;
        const BCRYPT_ALG_HANDLE aes = Algorithm(BCRYPT_AES_ALGORITHM, 0);
        BCryptSetProperty(aes, BCRYPT_CHAINING_MODE, reinterpret_cast<UCHAR*>(mode), sizeof mode, 0);
        return aes;
    }();
    return algorithm;
}

} // namespace

AesCipher::AesCipher(std::uint32_t strength, const std::string& head, const std::string& password) {
    constexpr ULONGLONG kRounds = 1000;
    if (head.size() != HeadSize(strength)) return;
    const ULONG keySize = 8 * strength + 8, saltSize = Size(head) - kCheckSize;
    const std::string derived(2 * keySize + kCheckSize, '\0'); // both keys and the check
    if (BCryptDeriveKeyPBKDF2(SealAlgorithm(), Bytes(password), Size(password), Bytes(head), saltSize, kRounds,
                              Bytes(derived), Size(derived), 0) != 0)
        return;
    well_ = derived.compare(2 * keySize, kCheckSize, head, saltSize) == 0 &&
            BCryptGenerateSymmetricKey(BlockAlgorithm(), &key_, nullptr, 0, Bytes(derived), keySize, 0) == 0 &&
            BCryptCreateHash(SealAlgorithm(), &hash_, nullptr, 0, Bytes(derived) + keySize, keySize, 0) == 0;
}

AesCipher::~AesCipher() {
    if (key_) BCryptDestroyKey(key_);
    if (hash_) BCryptDestroyHash(hash_);
}

void AesCipher::Decipher(std::string& bytes) {
    well_ = well_ && BCryptHashData(hash_, Bytes(bytes), Size(bytes), 0) == 0;
    for (char& byte : bytes) {
        if (used_ == stream_.size()) NextStream();
        byte = static_cast<char>(byte ^ stream_[used_++]);
    }
}

// The key over blocks that hold their number, from 1 on, little-endian.
void AesCipher::NextStream() {
    constexpr std::size_t kBlock = 16, kBlocks = 1024;
    std::string numbers(kBlock * kBlocks, '\0');
    for (std::size_t at = 0; at < numbers.size(); at += kBlock) {
        ++counter_;
        for (std::size_t i = 0; i < sizeof counter_; ++i) numbers[at + i] = static_cast<char>(counter_ >> 8 * i);
    }
    stream_ = numbers;
    ULONG done = 0;
    well_ = well_ && BCryptEncrypt(key_, Bytes(numbers), Size(numbers), nullptr, nullptr, 0, Bytes(stream_),
                                   Size(stream_), &done, 0) == 0;
    used_ = 0;
}

bool AesCipher::Sealed(const std::string& seal) {
    constexpr std::size_t kHashSize = 20;
    const std::string hash(kHashSize, '\0');
    return well_ && BCryptFinishHash(hash_, Bytes(hash), Size(hash), 0) == 0 && hash.substr(0, kSealSize) == seal;
}

} // namespace korlan
