// kit: the bounds-checked reading machinery under InstallData. A Cursor reads the
// inflated kit through a file handle and knows how many bytes remain, so no count,
// length or allocation is ever trusted beyond what the kit really holds; RecordFields
// decodes the fields of one record already read into memory without running past it.
// Both raise Failure, which only InstallData catches: nothing here reaches a caller
// outside the kit reader. A refusal carries a static reason and the place it was met,
// so that tools can explain a 13 without walking the tables a second time.
//
// Threads: a Cursor moves the position of its handle; one thread per handle.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <utility>
#include <vector>

#include "fs/file_system.h"
#include "fs/result_codes.h"
#include "kit/kit_format.h"
#include "kit/load_refusal.h"
#include "text/string.h"

namespace kitreader {

// The code of the first failure while reading the kit's tables; the refusal's reason
// is set only when a rule of the kit format was broken.
struct Failure {
    ResultCode code;
    LoadRefusal refusal;
};

// The table and record the reader is in.
struct Place {
    KitTable table = KitTable::kNone;
    std::uint32_t record = 0;
};

// Reasons met in more than one place.
constexpr char kKitEndsInsideField[] = "kit ends inside a field";
constexpr char kStringPastRecord[] = "string runs past its record";

// `range` only for a file's data range.
[[noreturn]] inline void Refuse(const char* reason, std::uint64_t position, Place place = {},
                                ClaimedRange range = {}) {
    throw Failure{kDamagedData, LoadRefusal{reason, position, place.table, place.record, range}};
}

// `reason` explains a 13 that comes from the kit itself rather than from the system.
inline void Check(ResultCode code, const char* reason = nullptr) {
    if (code != kOk)
        throw Failure{
            code, LoadRefusal{code == kDamagedData ? reason : nullptr, 0, KitTable::kNone, 0, {}}};
}

// Runs `body` and turns whatever it raises into a result code, so that no exception
// leaves the kit reader; running out of memory on a hostile kit counts as damage.
// `refusal`, when given, receives the failure's refusal (left alone on success).
template <class Body>
ResultCode Guarded(Body&& body, LoadRefusal* refusal = nullptr) noexcept {
    try {
        body();
        return kOk;
    } catch (const Failure& failure) {
        if (refusal != nullptr) *refusal = failure.refusal;
        return failure.code;
    } catch (const std::exception&) {
        if (refusal != nullptr)
            *refusal = LoadRefusal{"not enough memory to read the kit", 0, KitTable::kNone, 0, {}};
        return kDamagedData;
    }
}

// `count` UTF-16LE units from `bytes` as a string, decoded through `units` (kept by the
// caller across names, so it grows only for the longest): a kit may hold tens of
// thousands of names, and the string is then made once at its exact length.
inline stdx::u16string DecodeUnits(const unsigned char* bytes, std::size_t count,
                                   std::vector<char16_t>& units) {
    if (units.size() < count) units.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        units[i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    }
    return stdx::u16string(units.data(), count);
}

// Fields of one record held in memory (the Cursor's buffer, valid until its next read);
// every take refuses to run past the record.
class RecordFields {
  public:
    // `origin` is the kit position of the first byte, for refusals.
    RecordFields(const unsigned char* bytes, std::size_t length, std::uint64_t origin, Place place,
                 std::vector<char16_t>& units)
        : bytes_(bytes), length_(length), origin_(origin), place_(place), units_(units) {}

    std::uint64_t position() const { return origin_ + position_; }
    Place place() const { return place_; }

    std::uint32_t TakeU32() {
        return kitformat::read_u32le(Take(kitformat::kU32Size, "field runs past its record"));
    }
    std::uint64_t TakeU64() {
        return kitformat::read_u64le(Take(kitformat::kFileTimeSize, "field runs past its record"));
    }
    stdx::u16string TakeString() {
        const std::uint64_t start = position();
        const std::uint32_t units =
            kitformat::read_u32le(Take(kitformat::kStringCountSize, kStringPastRecord, start));
        return DecodeUnits(Take(std::size_t{units} * 2, kStringPastRecord, start), units, units_);
    }

  private:
    // A refusal names `fieldStart`, where the field being taken begins.
    const unsigned char* Take(std::size_t count, const char* reason) {
        return Take(count, reason, position());
    }
    const unsigned char* Take(std::size_t count, const char* reason, std::uint64_t fieldStart) {
        if (count > length_ - position_) Refuse(reason, fieldStart, place_);
        const unsigned char* field = bytes_ + position_;
        position_ += count;
        return field;
    }

    const unsigned char* bytes_;
    std::size_t length_;
    std::uint64_t origin_;
    Place place_;
    std::vector<char16_t>& units_;
    std::size_t position_ = 0;
};

// Reads the inflated kit at the position of an open handle, keeping its own count of
// the position so that remaining() needs no system call, and reading ahead so that
// small records cost no system call each.
template <class FileSystemPolicy>
class Cursor {
  public:
    // At the start of the file; the size is measured once, by seeking to the end.
    static Cursor AtStart(FileHandle handle) {
        const std::uint64_t size = Seek(handle, kFileEnd);
        Rewind(handle, 0);
        return Cursor(handle, 0, size);
    }

    // At the handle's current position, which it leaves unchanged.
    static Cursor AtCurrentPosition(FileHandle handle) {
        const std::uint64_t position = Seek(handle, kFileCurrent);
        const std::uint64_t size = Seek(handle, kFileEnd);
        Rewind(handle, position);
        return Cursor(handle, position, size < position ? position : size);
    }

    std::uint64_t position() const { return position_; }
    std::uint64_t size() const { return size_; }
    std::uint64_t remaining() const { return size_ - position_; }

    // Names the table and record that later refusals are met in.
    void Enter(Place place) { place_ = place; }

    // A count of records; refused when that many cannot fit in the rest of the kit,
    // before anything is sized by it.
    std::uint32_t ReadCount(std::size_t minimumRecordLength) {
        const std::uint64_t start = position_;
        const std::uint32_t count = ReadU32();
        if (std::uint64_t{count} * minimumRecordLength > remaining()) {
            Refuse("count cannot fit in the rest of the kit", start, place_);
        }
        return count;
    }

    // Reads through a read-ahead buffer: a kit of 10,000 files would otherwise cost two
    // system calls per record. The handle runs ahead of position() until Settle.
    void Read(void* destination, std::uint32_t count) {
        if (count > remaining()) Refuse(kKitEndsInsideField, position_, place_);
        auto* out = static_cast<unsigned char*>(destination);
        for (std::uint32_t done = 0; done < count;) {
            if (aheadNext_ == aheadEnd_) {
                const std::uint64_t handleAt = position_ + done;
                if (count - done >= kReadAhead) {  // too big to be worth buffering
                    if (ReadFromHandle(out + done, count - done) != count - done)
                        Refuse(kKitEndsInsideField, position_, place_);  // the file ended early
                    break;
                }
                if (ahead_.empty()) ahead_.resize(kReadAhead);
                const std::uint64_t want = std::min<std::uint64_t>(kReadAhead, size_ - handleAt);
                aheadNext_ = 0;
                aheadEnd_ = ReadFromHandle(ahead_.data(), static_cast<std::uint32_t>(want));
                if (aheadEnd_ == 0) Refuse(kKitEndsInsideField, position_, place_);
            }
            const std::size_t take = std::min<std::size_t>(count - done, aheadEnd_ - aheadNext_);
            std::memcpy(out + done, ahead_.data() + aheadNext_, take);
            aheadNext_ += take;
            done += static_cast<std::uint32_t>(take);
        }
        position_ += count;
    }

    // Puts the handle at position(), after the last byte read.
    void Settle() { MoveTo(position_); }

    std::uint32_t ReadU32() {
        unsigned char bytes[kitformat::kU32Size];
        Read(bytes, sizeof bytes);
        return kitformat::read_u32le(bytes);
    }

    // A kit string standing on its own: count, then that many units.
    stdx::u16string ReadString() {
        const std::uint64_t start = position_;
        const std::uint32_t units = ReadU32();
        if (std::uint64_t{units} * 2 > remaining()) {
            Refuse("string runs past the end of the kit", start, place_);
        }
        Read(Buffer(std::size_t{units} * 2), units * 2);
        return DecodeUnits(buffer_.data(), units, units_);
    }

    // The fields of one record, after its length field. The length counts itself and
    // must leave room for the record's fixed fields.
    RecordFields ReadRecord(std::size_t minimumLength) {
        const std::uint64_t start = position_;
        const std::uint32_t length = ReadU32();
        if (length < minimumLength) Refuse("record length below its fixed fields", start, place_);
        const std::uint32_t bodyLength = length - kitformat::kRecordLengthSize;
        if (bodyLength > remaining()) Refuse("record runs past the end of the kit", start, place_);
        Read(Buffer(bodyLength), bodyLength);
        return RecordFields(buffer_.data(), bodyLength, start + kitformat::kRecordLengthSize,
                            place_, units_);
    }

    // Where record `record` (1-based) of a table begins, found by walking the lengths of
    // the records before it from `firstRecord`; they were all read before. Only for
    // refusals: it moves the handle.
    std::uint64_t RecordStart(std::uint64_t firstRecord, std::uint32_t record) {
        std::uint64_t start = firstRecord;
        for (std::uint32_t i = 1; i < record; ++i) {
            MoveTo(start);
            start += ReadU32();
        }
        return start;
    }

  private:
    static constexpr std::uint32_t kReadAhead = 64 * 1024;

    Cursor(FileHandle handle, std::uint64_t position, std::uint64_t size)
        : handle_(handle), position_(position), size_(size) {}

    void MoveTo(std::uint64_t position) {
        Rewind(handle_, position);
        position_ = position;
        aheadNext_ = aheadEnd_ = 0;
    }

    // Up to `count` bytes at the handle's position; fewer only at the end of the file.
    std::uint32_t ReadFromHandle(void* destination, std::uint32_t count) {
        std::uint32_t read = 0;
        if (FileSystemPolicy::ReadFile(handle_, destination, count, &read, nullptr) != kOk) {
            const ResultCode code = FileSystemPolicy::GetLastError();
            if (code == kOk) Refuse("kit cannot be read", position_, place_);
            throw Failure{code, LoadRefusal{}};
        }
        return read;
    }

    // Moves by 0 from `method` and answers the 64-bit position.
    static std::uint64_t Seek(FileHandle handle, std::uint32_t method) {
        std::int32_t high = 0;
        const std::uint32_t low = FileSystemPolicy::SetFilePointer(handle, 0, &high, method);
        if (high < 0) Refuse("kit too large to address", 0);
        return std::uint64_t{static_cast<std::uint32_t>(high)} << 32 | low;
    }

    // Steps stay below 2^31 so that no sign convention of the low part matters.
    static void Rewind(FileHandle handle, std::uint64_t position) {
        constexpr std::uint64_t kStep = 0x7FFFFFFF;
        if (FileSystemPolicy::SetFilePointer(handle, 0, nullptr, kFileBegin) != 0) {
            Refuse("kit cannot be repositioned", 0);
        }
        for (std::uint64_t left = position; left > 0;) {
            const std::uint64_t step = left < kStep ? left : kStep;
            FileSystemPolicy::SetFilePointer(handle, static_cast<std::int32_t>(step), nullptr,
                                             kFileCurrent);
            left -= step;
        }
        if (Seek(handle, kFileCurrent) != position) Refuse("kit cannot be repositioned", position);
    }

    // The one buffer every record and string is read into, grown to the largest so far;
    // sizes are checked against the rest of the kit before they get here.
    unsigned char* Buffer(std::size_t size) {
        if (buffer_.size() < size) buffer_.resize(size);
        return buffer_.data();
    }

    FileHandle handle_;
    std::uint64_t position_;
    std::uint64_t size_;
    Place place_;
    std::vector<unsigned char> buffer_;
    std::vector<char16_t> units_;
    std::vector<unsigned char> ahead_;  // allocated on the first read
    std::size_t aheadNext_ = 0;
    std::size_t aheadEnd_ = 0;
};

}  // namespace kitreader
