#include "platform/jet/JetFile.h"

#include "platform/jet/Rc4.h"

#include <algorithm>
#include <cmath>

namespace korlan::jet {

namespace {

constexpr Layout kJet3Layout = {
    .pageSize = 2048,
    .rowCountAt = 8,
    .highestColumnAt = 21,
    .variableColumnsAt = 23,
    .columnsAt = 25,
    .realIndexesAt = 31,
    .usageMapAt = 35,
    .indexRecordsAt = 43,
    .indexRecordSize = 8,
    .descriptorSize = 18,
    .numberAt = 1,
    .variableIndexAt = 3,
    .scaleAt = 10,
    .flagsAt = 13,
    .offsetAt = 14,
    .sizeAt = 16,
    .numberSize = 1,
};

constexpr Layout kJet4Layout = {
    .pageSize = 4096,
    .rowCountAt = 12,
    .highestColumnAt = 41,
    .variableColumnsAt = 43,
    .columnsAt = 45,
    .realIndexesAt = 51,
    .usageMapAt = 55,
    .indexRecordsAt = 63,
    .indexRecordSize = 12,
    .descriptorSize = 25,
    .numberAt = 5,
    .variableIndexAt = 7,
    .scaleAt = 12,
    .flagsAt = 15,
    .offsetAt = 21,
    .sizeAt = 23,
    .numberSize = 2,
};

constexpr std::size_t kSignatureAt = 4, kVersionAt = 0x14;
constexpr std::size_t kMaskedAt = 0x18, kJet3MaskedSize = 126, kJet4MaskedSize = 128;
constexpr std::string_view kMaskKey = "\xC7\xDA\x39\x6B";
constexpr std::size_t kCodePageAt = 0x3C, kPageKeyAt = 0x3E, kPasswordAt = 0x42, kCreatedAt = 0x72;
constexpr std::size_t kJet3PasswordSize = 20, kJet4PasswordSize = 40;
constexpr std::uint32_t kCataloguePage = 2;

// Jet 4 hides each byte of the password behind the day of creation, a 32-bit number.
std::string UnmaskedPassword(ByteView header) {
    const double created = header.F64(kCreatedAt);
    Require(std::abs(created) < 2147483648.0, "no creation date"); // false for what is not a number, too
    const auto day = static_cast<std::uint32_t>(static_cast<std::int32_t>(created));
    std::string password(header.Part(kPasswordAt, kJet4PasswordSize).Chars());
    for (std::size_t i = 0; i < password.size(); ++i)
        password[i] = static_cast<char>(password[i] ^ static_cast<char>(day >> 8 * (i % 4) & 0xFF));
    return password;
}

} // namespace

DataPage::DataPage(const Layout& layout, ByteView page)
    : page_(page), offsetsAt_(layout.rowCountAt + 2), rowCount_(page.U16(layout.rowCountAt)) {
    Require(rowCount_ <= (page.Size() - offsetsAt_) / 2, "more rows than a page holds");
}

StoredRow DataPage::Row(std::uint32_t row) const {
    Require(row < rowCount_, "a row that its page does not have");
    constexpr std::uint16_t kStartBits = 0x1FFF;
    const std::uint16_t entry = page_.U16(offsetsAt_ + std::size_t{2} * row);
    const std::size_t start = entry & kStartBits;
    const std::size_t end = row == 0 ? page_.Size() : page_.U16(offsetsAt_ + std::size_t{2} * (row - 1)) & kStartBits;
    Require(offsetsAt_ + std::size_t{2} * rowCount_ <= start && start <= end && end <= page_.Size(),
            "a row outside its page");
    return {page_.Part(start, end - start), static_cast<std::uint16_t>(entry & ~kStartBits)};
}

JetFile::JetFile(std::string bytes, CodePageDecoder decoder) : bytes_(std::move(bytes)), decoder_(decoder) {
    Require(bytes_.size() <= kLargestFile, "the file is too large");
    const ByteView start(bytes_);
    Require(start.U32(0) == 0x100, "no signature");
    const std::string_view signature = start.Part(kSignatureAt, 16).Chars();
    const std::uint8_t version = start.U8(kVersionAt);
    const bool isAccdb = signature == std::string_view("Standard ACE DB\0", 16);
    Require(isAccdb || signature == std::string_view("Standard Jet DB\0", 16), "no signature");
    Require(isAccdb ? version == 2 : version <= 1, "a version this program does not know");
    isJet3_ = version == 0;
    layout_ = isJet3_ ? &kJet3Layout : &kJet4Layout;
    Require(bytes_.size() % layout_->pageSize == 0, "the file is cut short");
    Require(PageCount() >= 3, "the file is cut short");
    ReadHeader(isAccdb);
}

void JetFile::ReadHeader(bool isAccdb) {
    ApplyRc4(kMaskKey, bytes_.data() + kMaskedAt, isJet3_ ? kJet3MaskedSize : kJet4MaskedSize);
    const ByteView header(std::string_view(bytes_).substr(0, layout_->pageSize));
    codePage_ = header.U16(kCodePageAt);
    const std::uint32_t key = header.U32(kPageKeyAt);
    if (isAccdb) {
        // A password on an .accdb encrypts its pages by a scheme of its own; then page 2 holds no definition.
        const std::size_t catalogue = kCataloguePage * layout_->pageSize;
        if (key != 0 || bytes_[catalogue] != static_cast<char>(PageType::Definition))
            throw RuntimeError(kErrUnrecognizedFormat, "Encrypted database files cannot be read");
    }
    ReadPassword(header, isAccdb);
    if (key != 0) DecodePages(key);
}

void JetFile::ReadPassword(ByteView header, bool isAccdb) {
    if (isAccdb) return;
    if (isJet3_) {
        const std::string_view stored = header.Part(kPasswordAt, kJet3PasswordSize).Chars();
        AppendNameText(password_, stored.substr(0, stored.find('\0')));
    } else {
        AppendNameText(password_, UnmaskedPassword(header));
        password_.resize(std::min(password_.find('\0'), password_.size()));
    }
}

// Pages never used may lie in clear and turn into noise here; nothing points to them.
void JetFile::DecodePages(std::uint32_t key) {
    for (std::uint32_t number = 1; number < PageCount(); ++number) {
        std::string pageKey;
        for (unsigned shift = 0; shift < 32; shift += 8) pageKey += static_cast<char>((key ^ number) >> shift & 0xFF);
        ApplyRc4(pageKey, bytes_.data() + number * layout_->pageSize, layout_->pageSize);
    }
}

ByteView JetFile::Page(std::uint64_t number, PageType type) const {
    Require(number != 0 && number < PageCount(), "a page outside the file");
    const ByteView page =
        ByteView(bytes_).Part(static_cast<std::size_t>(number) * layout_->pageSize, layout_->pageSize);
    Require(page.U8(0) == static_cast<std::uint8_t>(type), "a page of another type");
    return page;
}

void JetFile::AppendValueText(std::string& out, std::string_view bytes) const {
    if (isJet3_) {
        AppendCodePageText(out, bytes, codePage_, decoder_);
    } else {
        AppendJet4Text(out, bytes);
    }
}

void JetFile::AppendNameText(std::string& out, std::string_view bytes) const {
    if (isJet3_) {
        AppendCodePageText(out, bytes, codePage_, decoder_);
    } else {
        AppendUtf16Text(out, bytes);
    }
}

} // namespace korlan::jet
