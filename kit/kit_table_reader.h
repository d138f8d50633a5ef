// kit: the bounds-checked reading machinery under InstallData. A Cursor reads the
// inflated kit through a file handle and knows how many bytes remain, so no count,
// length or allocation is ever trusted beyond what the kit really holds; RecordFields
// decodes the fields of one record already read into memory without running past it.
// Both raise Failure, which only InstallData catches: nothing here reaches a caller
// outside the kit reader.
//
// Threads: a Cursor moves the position of its handle; one thread per handle.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <vector>

#include "fs/file_system.h"
#include "fs/result_codes.h"
#include "kit/kit_format.h"
#include "text/string.h"

namespace kitreader {

// The code of the first failure while reading the kit's tables.
struct Failure {
    ResultCode code;
};

[[noreturn]] inline void Refuse() { throw Failure{kDamagedData}; }

inline void Check(ResultCode code) {
    if (code != kOk) throw Failure{code};
}

// Runs `body` and turns whatever it raises into a result code, so that no exception
// leaves the kit reader; running out of memory on a hostile kit counts as damage.
template <class Body>
ResultCode Guarded(Body&& body) noexcept {
    try {
        body();
        return kOk;
    } catch (const Failure& failure) {
        return failure.code;
    } catch (const std::exception&) {
        return kDamagedData;
    }
}

// Appends `count` UTF-16LE units from `bytes` to a new string.
inline stdx::u16string DecodeUnits(const unsigned char* bytes, std::size_t count) {
    stdx::u16string text;
    text.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        text.push_back(static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8));
    }
    return text;
}

// Fields of one record held in memory; every take refuses to run past the record.
class RecordFields {
  public:
    explicit RecordFields(const std::vector<unsigned char>& bytes) : bytes_(bytes) {}

    std::uint32_t TakeU32() { return kitformat::read_u32le(Take(kitformat::kU32Size)); }
    std::uint64_t TakeU64() { return kitformat::read_u64le(Take(kitformat::kFileTimeSize)); }
    stdx::u16string TakeString() {
        const std::uint32_t units = TakeU32();
        return DecodeUnits(Take(std::size_t{units} * 2), units);
    }

  private:
    const unsigned char* Take(std::size_t count) {
        if (count > bytes_.size() - position_) Refuse();
        const unsigned char* field = bytes_.data() + position_;
        position_ += count;
        return field;
    }

    const std::vector<unsigned char>& bytes_;
    std::size_t position_ = 0;
};

// Reads the inflated kit at the position of an open handle, keeping its own count of
// the position so that remaining() needs no system call.
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

    // Refuses a count of records that cannot fit in the rest of the kit, before anything
    // is sized by it.
    void RequireRoomFor(std::uint32_t count, std::size_t minimumRecordLength) const {
        if (std::uint64_t{count} * minimumRecordLength > remaining()) Refuse();
    }

    void Read(void* destination, std::uint32_t count) {
        if (count > remaining()) Refuse();
        std::uint32_t read = 0;
        if (FileSystemPolicy::ReadFile(handle_, destination, count, &read, nullptr) != kOk) {
            const ResultCode code = FileSystemPolicy::GetLastError();
            throw Failure{code != kOk ? code : kDamagedData};
        }
        if (read != count) Refuse();  // the file ended early
        position_ += count;
    }

    std::uint32_t ReadU32() {
        unsigned char bytes[kitformat::kU32Size];
        Read(bytes, sizeof bytes);
        return kitformat::read_u32le(bytes);
    }

    // A kit string standing on its own: count, then that many units.
    stdx::u16string ReadString() {
        const std::uint32_t units = ReadU32();
        if (std::uint64_t{units} * 2 > remaining()) Refuse();
        std::vector<unsigned char> bytes(std::size_t{units} * 2);
        Read(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return DecodeUnits(bytes.data(), units);
    }

    // The bytes of one record after its length field. The length counts itself and must
    // leave room for the record's fixed fields.
    std::vector<unsigned char> ReadRecord(std::size_t minimumLength) {
        const std::uint32_t length = ReadU32();
        if (length < minimumLength) Refuse();
        const std::uint32_t bodyLength = length - kitformat::kRecordLengthSize;
        if (bodyLength > remaining()) Refuse();
        std::vector<unsigned char> body(bodyLength);
        Read(body.data(), bodyLength);
        return body;
    }

  private:
    Cursor(FileHandle handle, std::uint64_t position, std::uint64_t size)
        : handle_(handle), position_(position), size_(size) {}

    // Moves by 0 from `method` and answers the 64-bit position.
    static std::uint64_t Seek(FileHandle handle, std::uint32_t method) {
        std::int32_t high = 0;
        const std::uint32_t low = FileSystemPolicy::SetFilePointer(handle, 0, &high, method);
        if (high < 0) Refuse();
        return std::uint64_t{static_cast<std::uint32_t>(high)} << 32 | low;
    }

    // Steps stay below 2^31 so that no sign convention of the low part matters.
    static void Rewind(FileHandle handle, std::uint64_t position) {
        constexpr std::uint64_t kStep = 0x7FFFFFFF;
        if (FileSystemPolicy::SetFilePointer(handle, 0, nullptr, kFileBegin) != 0) Refuse();
        for (std::uint64_t left = position; left > 0;) {
            const std::uint64_t step = left < kStep ? left : kStep;
            FileSystemPolicy::SetFilePointer(handle, static_cast<std::int32_t>(step), nullptr,
                                             kFileCurrent);
            left -= step;
        }
        if (Seek(handle, kFileCurrent) != position) Refuse();
    }

    FileHandle handle_;
    std::uint64_t position_;
    std::uint64_t size_;
};

}  // namespace kitreader
