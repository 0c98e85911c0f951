// A database file in memory: its header, its pages and the rows on them. Checked here, once for everyone: the size, the
// signature, page numbers, page types, and where rows begin and end. Any damage raises RuntimeError 3343.
#pragma once

#include "platform/jet/ByteView.h"
#include "platform/jet/CodedText.h"

#include <string>

namespace korlan::jet {

// The whole file is held in memory. A catalogue of 5,000 files takes half a megabyte, so this leaves room for some
// 150,000; what is larger is no catalogue, and a hostile server must not fill the memory.
constexpr std::size_t kLargestFile = std::size_t{16} << 20;

enum class PageType : std::uint8_t { Data = 1, Definition = 2, UsageBitmap = 5 };

// What differs between Jet 3 and the formats after it: sizes, and offsets into pages, definitions and descriptors.
struct Layout {
    std::size_t pageSize;
    std::size_t rowCountAt; // on a data page; the rows' offsets follow it
    std::size_t highestColumnAt, variableColumnsAt, columnsAt, realIndexesAt, usageMapAt; // in a definition
    std::size_t indexRecordsAt, indexRecordSize, descriptorSize;
    std::size_t numberAt, variableIndexAt, scaleAt, flagsAt, offsetAt, sizeAt; // in a descriptor
    std::size_t numberSize; // of counts and offsets in a row, and of a name's length: 1 or 2 bytes
};

// Low byte the row, upper three bytes the page.
struct RowPointer {
    std::uint32_t page;
    std::uint32_t row;
    static RowPointer From(std::uint32_t stored) { return {stored >> 8, stored & 0xFF}; }
};

constexpr std::uint16_t kRowDeleted = 0x8000; // or the body of a moved row, which only its pointer reaches
constexpr std::uint16_t kRowMoved = 0x4000;   // four bytes that point to the body

struct StoredRow {
    ByteView bytes;
    std::uint16_t flags;
};

// A page of rows. Rows fill it from its end: row 0 ends with the page, each further one where the one before starts.
class DataPage {
public:
    DataPage(const Layout& layout, ByteView page);
    std::uint32_t Owner() const { return page_.U32(4); } // page of a definition, or kLongValueOwner
    std::uint32_t RowCount() const { return rowCount_; }
    StoredRow Row(std::uint32_t row) const;

private:
    ByteView page_;
    std::size_t offsetsAt_;
    std::uint32_t rowCount_;
};
constexpr std::uint32_t kLongValueOwner = 0x4C41564C; // the letters LVAL

class JetFile {
public:
    // Takes the bytes of the whole file. `decoder` serves the texts of Jet 3 files and may be null.
    JetFile(std::string bytes, CodePageDecoder decoder);

    bool IsJet3() const { return isJet3_; }
    const Layout& PageLayout() const { return *layout_; }
    std::size_t Size() const { return bytes_.size(); }
    std::uint32_t PageCount() const { return static_cast<std::uint32_t>(bytes_.size() / layout_->pageSize); }
    ByteView Page(std::uint64_t number, PageType type) const;
    DataPage Rows(std::uint64_t number) const { return DataPage(*layout_, Page(number, PageType::Data)); }
    // The password is only compared: the pages are readable without it. "" when the file has none.
    const std::string& Password() const { return password_; }

    void AppendValueText(std::string& out, std::string_view bytes) const;
    void AppendNameText(std::string& out, std::string_view bytes) const;

private:
    void ReadHeader(bool isAccdb);
    void ReadPassword(ByteView header, bool isAccdb);
    void DecodePages(std::uint32_t key);

    std::string bytes_;
    CodePageDecoder decoder_;
    const Layout* layout_ = nullptr;
    bool isJet3_ = false;
    unsigned codePage_ = 1252;
    std::string password_;
};

} // namespace korlan::jet
