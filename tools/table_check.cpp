#include "tools/table_check.h"

#include <sys/types.h>

#include <vector>

#include "kit/kit_format.h"
#include "tools/utf_conversion.h"

namespace kittool {

namespace {

struct Refusal {
    std::string problem;
};

// Random-access reads that never go past a limit: the kit's end, or a record's end.
class KitReader {
  public:
    KitReader(std::FILE* file, std::uint64_t size) : file_(file), size_(size) {}

    std::uint64_t size() const { return size_; }

    bool read(std::uint64_t at, std::uint64_t limit, void* out, std::size_t count) const {
        if (at > limit || count > limit - at) return false;
        if (fseeko(file_, static_cast<off_t>(at), SEEK_SET) != 0) return false;
        return std::fread(out, 1, count, file_) == count;
    }

    bool read_u32(std::uint64_t at, std::uint64_t limit, std::uint32_t& value) const {
        unsigned char bytes[kitformat::kU32Size];
        if (!read(at, limit, bytes, sizeof bytes)) return false;
        value = kitformat::read_u32le(bytes);
        return true;
    }

  private:
    std::FILE* file_;
    std::uint64_t size_;
};

std::string at_byte(const std::string& what, std::uint64_t position) {
    return what + " at byte " + std::to_string(position);
}

std::uint32_t need_u32(const KitReader& kit, std::uint64_t at, std::uint64_t limit,
                       const std::string& what) {
    std::uint32_t value = 0;
    if (!kit.read_u32(at, limit, value))
        throw Refusal{at_byte(what, at) + (limit < kit.size() ? " runs past its record"
                                                              : " runs past the end of the kit")};
    return value;
}

// Skips one kit string, answering the position after it.
std::uint64_t skip_string(const KitReader& kit, std::uint64_t at, std::uint64_t limit,
                          const std::string& what) {
    const std::uint64_t count = need_u32(kit, at, limit, what + " length");
    const std::uint64_t end = at + kitformat::kStringCountSize + 2 * count;
    if (end > limit)
        throw Refusal{at_byte(what, at) + " (" + std::to_string(count) + " units) runs past " +
                      (limit < kit.size() ? "its record" : "the end of the kit")};
    return end;
}

void check_count_fits(std::uint32_t count, std::uint64_t remaining, std::size_t min_record,
                      const std::string& what) {
    if (count > remaining / min_record)
        throw Refusal{what + " count " + std::to_string(count) + " cannot fit in the " +
                      std::to_string(remaining) + " bytes that remain"};
}

// Opens a record at `at`: checks its length field and answers the record's end.
std::uint64_t record_end(const KitReader& kit, std::uint64_t at, std::size_t min_length,
                         const std::string& what) {
    const std::uint32_t length = need_u32(kit, at, kit.size(), what + " length");
    if (length < min_length)
        throw Refusal{at_byte(what, at) + ": length " + std::to_string(length) + " is below the " +
                      std::to_string(min_length) + " its fields need"};
    if (at + length > kit.size())
        throw Refusal{at_byte(what, at) + ": length " + std::to_string(length) +
                      " runs past the end of the kit"};
    return at + length;
}

struct FileRange {
    std::string name;
    std::uint32_t offset;
    std::uint32_t size;
};

FileRange check_file_record(const KitReader& kit, std::uint64_t at, std::uint64_t end,
                            const std::string& what) {
    const std::uint64_t name_at = at + kitformat::kRecordLengthSize;
    const std::uint32_t units = need_u32(kit, name_at, end, what + " name length");
    const std::uint64_t fields_at = skip_string(kit, name_at, end, what + " name");
    if (units > kLongestCheckedName)
        throw Refusal{at_byte(what, at) + ": name of " + std::to_string(units) +
                      " units is longer than any path"};
    std::vector<unsigned char> bytes(2 * static_cast<std::size_t>(units));
    std::u16string name(units, u'\0');
    if (!kit.read(name_at + kitformat::kStringCountSize, end, bytes.data(), bytes.size()))
        throw Refusal{at_byte(what, at) + ": name cannot be read"};
    for (std::size_t i = 0; i < units; ++i)
        name[i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    const std::string shown = utf16_for_display(name.data(), name.size());
    if (!kitformat::is_safe_file_name(name.data(), name.size()))
        throw Refusal{at_byte(what, at) + ": unsafe name '" + shown +
                      "' (empty, zero unit, leading separator or drive letter, or '..' "
                      "segment)"};

    unsigned char fixed[kitformat::kFileFixedFieldsSize];
    if (!kit.read(fields_at, end, fixed, sizeof fixed))
        throw Refusal{at_byte(what, at) + ": time, offset and size run past its record"};
    return FileRange{shown, kitformat::read_u32le(fixed + kitformat::kFileTimeSize),
                     kitformat::read_u32le(fixed + kitformat::kFileTimeSize + 4)};
}

}  // namespace

TableReport check_kit_tables(std::FILE* inflated, std::uint64_t inflated_size) {
    const KitReader kit(inflated, inflated_size);
    TableReport report;
    try {
        std::uint64_t at = 0;
        const std::uint32_t layout = need_u32(kit, at, kit.size(), "layout");
        at += kitformat::kU32Size;
        if (layout == kitformat::kSingleProductLayout) {
            at = skip_string(kit, at, kit.size(), "product name");
            at = skip_string(kit, at, kit.size(), "provider");
            at = skip_string(kit, at, kit.size(), "description file");
            report.product_count = 1;
        } else {
            const std::uint32_t count = need_u32(kit, at, kit.size(), "product count");
            at += kitformat::kU32Size;
            check_count_fits(count, kit.size() - at, kitformat::kMinProductRecordLength, "product");
            for (std::uint32_t i = 0; i < count; ++i) {
                const std::string what = "product record " + std::to_string(i + 1);
                const std::uint64_t end =
                    record_end(kit, at, kitformat::kMinProductRecordLength, what);
                std::uint64_t field = at + kitformat::kRecordLengthSize;
                for (const char* part : {" language", " name", " provider", " description"})
                    field = skip_string(kit, field, end, what + part);
                at = end;
            }
            report.product_count = count;
        }

        const std::uint32_t count = need_u32(kit, at, kit.size(), "file count");
        at += kitformat::kU32Size;
        check_count_fits(count, kit.size() - at, kitformat::kMinFileRecordLength, "file");
        std::vector<FileRange> ranges;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::string what = "file record " + std::to_string(i + 1);
            const std::uint64_t end = record_end(kit, at, kitformat::kMinFileRecordLength, what);
            ranges.push_back(check_file_record(kit, at, end, what));
            at = end;
        }
        report.file_count = count;
        report.data_start = at;

        // In 64 bits, so a range can never wrap back into the kit.
        for (const FileRange& range : ranges) {
            const std::uint64_t first = at + range.offset;
            if (first + range.size > kit.size())
                throw Refusal{"file '" + range.name + "': data at bytes " + std::to_string(first) +
                              " to " + std::to_string(first + range.size) + " lies outside the " +
                              std::to_string(kit.size()) + "-byte kit"};
        }
        report.sound = true;
    } catch (const Refusal& refusal) {
        report.problem = refusal.problem;
    }
    return report;
}

}  // namespace kittool
