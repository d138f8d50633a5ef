#include "tools/deflate_writer.h"

#include <cerrno>
#include <cstring>

#include "kit/kit_format.h"

namespace kittool {

namespace {

constexpr std::size_t kChunkSize = 64 * 1024;
constexpr int kDefaultMemoryLevel = 8;

}  // namespace

RawDeflateWriter::~RawDeflateWriter() {
    if (started_) deflateEnd(&stream_);
}

bool RawDeflateWriter::start(std::FILE* out, int level, std::string& error) {
    stream_ = z_stream{};
    if (deflateInit2(&stream_, level, Z_DEFLATED, kitformat::kRawDeflateWindowBits,
                     kDefaultMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
        error = "cannot start compression at level " + std::to_string(level);
        return false;
    }
    started_ = true;
    out_ = out;
    written_ = 0;
    return true;
}

bool RawDeflateWriter::write(const void* bytes, std::size_t count, std::string& error) {
    auto* next = static_cast<const unsigned char*>(bytes);
    while (count > 0) {
        // avail_in is 32 bits wide; feed larger buffers in slices.
        const uInt slice = static_cast<uInt>(count < kChunkSize ? count : kChunkSize);
        stream_.next_in = const_cast<Bytef*>(next);
        stream_.avail_in = slice;
        if (!pump(Z_NO_FLUSH, error)) return false;
        next += slice;
        count -= slice;
    }
    return true;
}

bool RawDeflateWriter::finish(std::string& error) {
    stream_.next_in = nullptr;
    stream_.avail_in = 0;
    if (!pump(Z_FINISH, error)) return false;
    deflateEnd(&stream_);
    started_ = false;
    if (std::fflush(out_) != 0) {
        error = std::string("cannot write the kit: ") + std::strerror(errno);
        return false;
    }
    return true;
}

bool RawDeflateWriter::pump(int flush, std::string& error) {
    unsigned char chunk[kChunkSize];
    int status;
    do {
        stream_.next_out = chunk;
        stream_.avail_out = kChunkSize;
        status = deflate(&stream_, flush);
        if (status == Z_STREAM_ERROR) {
            error = "compression failed";
            return false;
        }
        const std::size_t produced = kChunkSize - stream_.avail_out;
        if (produced > 0 && std::fwrite(chunk, 1, produced, out_) != produced) {
            error = std::string("cannot write the kit: ") + std::strerror(errno);
            return false;
        }
        written_ += produced;
        // With all input taken, a partly filled chunk means deflate has nothing more
        // to give for this flush mode.
    } while (stream_.avail_out == 0 || (flush == Z_FINISH && status != Z_STREAM_END));
    return true;
}

}  // namespace kittool
