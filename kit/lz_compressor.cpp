#include "kit/lz_compressor.h"

#include <sys/mman.h>
#include <zlib.h>

#include <memory>
#include <new>

#include "fs/file_system.h"
#include "kit/kit_format.h"

namespace {

// Read-only private view of the whole source; released only after inflateEnd, since
// the inflater may still refer to its input until then.
class SourceMapping {
  public:
    SourceMapping(FileHandle handle, std::uint32_t length) : length_(length) {
        // A zero-length mapping is refused by the system; an empty kit needs none.
        if (length_ == 0) return;
        void* address = mmap(nullptr, length_, PROT_READ, MAP_PRIVATE, static_cast<int>(handle), 0);
        if (address != MAP_FAILED) address_ = address;
    }
    ~SourceMapping() {
        if (address_ != nullptr) munmap(address_, length_);
    }
    SourceMapping(const SourceMapping&) = delete;
    SourceMapping& operator=(const SourceMapping&) = delete;

    bool usable() const { return length_ == 0 || address_ != nullptr; }
    Bytef* bytes() const { return static_cast<Bytef*>(address_); }
    std::uint32_t length() const { return length_; }

  private:
    void* address_ = nullptr;
    std::uint32_t length_;
};

class Inflater {
  public:
    Inflater() : ready_(inflateInit2(&stream_, kitformat::kRawDeflateWindowBits) == Z_OK) {}
    ~Inflater() {
        if (ready_) inflateEnd(&stream_);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    bool ready() const { return ready_; }
    z_stream& stream() { return stream_; }

  private:
    z_stream stream_{};  // zero-filled: zlib's default allocators
    bool ready_;
};

// Runs the inflate loop and says in `report` how the stream ended; the caller owns both
// handles and the mapping.
ResultCode InflateInto(const SourceMapping& source, FileHandle destination, StreamReport& report) {
    Inflater inflater;
    if (!inflater.ready()) return kDamagedData;
    z_stream& stream = inflater.stream();
    stream.next_in = source.bytes();
    stream.avail_in = source.length();

    std::unique_ptr<unsigned char[]> buffer(
        new (std::nothrow) unsigned char[LZCompressor::kOutputBufferSize]);
    if (!buffer) return kDamagedData;  // like a failed inflateInit2: no memory to inflate with
    int status = Z_OK;
    do {
        stream.next_out = buffer.get();
        stream.avail_out = LZCompressor::kOutputBufferSize;
        status = inflate(&stream, Z_NO_FLUSH);
        // Input used up before the end of the stream: a truncated kit, whose tables the
        // reader will find short. Not an inflation error.
        if (status == Z_BUF_ERROR && stream.avail_in == 0) status = Z_OK;
        report.consumed = source.length() - stream.avail_in;

        const std::uint32_t produced = LZCompressor::kOutputBufferSize - stream.avail_out;
        report.inflatedSize += produced;
        // Counted here rather than by zlib, whose total may be 32-bit.
        if (report.inflatedSize > kitformat::kLargestInflatedKit) {
            report.end = StreamEnd::kTooLarge;
            return kDamagedData;
        }
        if (produced > 0) {
            std::uint32_t written = 0;
            const ResultCode code =
                FileSystem::WriteFile(destination, buffer.get(), produced, &written, nullptr);
            if (code != kOk || written != produced) return kCannotWrite;
        }
    } while (stream.avail_out == 0 && status == Z_OK);

    if (status < 0) {
        report.end = StreamEnd::kCorrupt;
        report.damage = stream.msg != nullptr ? stream.msg : "invalid deflate data";
        return kDamagedData;
    }
    if (status == Z_STREAM_END) {
        report.end = StreamEnd::kComplete;
        report.trailing = stream.avail_in;
    } else {
        report.end = StreamEnd::kEndsEarly;
    }
    return kOk;
}

}  // namespace

ResultCode LZCompressor::Decompress(const stdx::u16string& source,
                                    const stdx::u16string& destination,
                                    StreamReport* report) const {
    StreamReport unused;
    StreamReport& said = report != nullptr ? *report : unused;
    said = StreamReport{};
    FileHandle sourceHandle = kNoHandle;
    ResultCode code = FileSystem::OpenFile(source, kGenericRead, 0, kOpenExisting, sourceHandle);
    if (code != kOk) return code;

    FileHandle destinationHandle = kNoHandle;
    code = FileSystem::OpenFile(destination, kGenericWrite, 0, kCreateAlways, destinationHandle);
    if (code != kOk) {
        FileSystem::CloseFile(sourceHandle);
        return code;
    }
    // Create-always does not truncate by itself; an old, longer file must not show
    // through behind the new content. An empty one is left alone: on ext4 even a cut to
    // the length a file already has makes close() write all of the new content to disk.
    std::int32_t sizeHigh = 0;
    if (FileSystem::SetFilePointer(destinationHandle, 0, &sizeHigh, kFileEnd) != 0 ||
        sizeHigh != 0) {
        code = FileSystem::SetFilePointer(destinationHandle, 0, nullptr, kFileBegin) == 0
                   ? FileSystem::SetEndOfFile(destinationHandle)
                   : kCannotWrite;
    }

    if (code == kOk) {
        // Kits of 4 GiB or more are read only up to their length modulo 2^32.
        const std::uint32_t length = FileSystem::SetFilePointer(sourceHandle, 0, nullptr, kFileEnd);
        SourceMapping mapping(sourceHandle, length);
        code = mapping.usable() ? InflateInto(mapping, destinationHandle, said) : kDamagedData;
    } else {
        code = kCannotWrite;
    }

    FileSystem::CloseFile(destinationHandle);
    FileSystem::CloseFile(sourceHandle);
    return code;
}
