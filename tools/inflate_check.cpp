#include "tools/inflate_check.h"

#include <zlib.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "kit/kit_format.h"
#include "tools/file_ptr.h"

namespace kittool {

namespace {

constexpr std::size_t kChunkSize = 64 * 1024;
constexpr std::uint64_t kLargestInflatedKit = 0xFFFFFFFFu;

struct InflaterEnd {
    void operator()(z_stream* stream) const { inflateEnd(stream); }
};

std::uint64_t count_rest(std::FILE* in, unsigned char* buffer) {
    std::uint64_t count = 0;
    std::size_t got;
    while ((got = std::fread(buffer, 1, kChunkSize, in)) > 0) count += got;
    return count;
}

}  // namespace

bool inflate_kit(const std::string& kit_path, std::FILE* sink, InflateReport& report,
                 std::string& error) {
    FilePtr in(std::fopen(kit_path.c_str(), "rb"));
    if (!in) {
        error = "cannot read '" + kit_path + "': " + std::strerror(errno);
        return false;
    }
    z_stream stream{};
    if (inflateInit2(&stream, kitformat::kRawDeflateWindowBits) != Z_OK) {
        error = "cannot start decompression";
        return false;
    }
    std::unique_ptr<z_stream, InflaterEnd> inflater(&stream);
    std::unique_ptr<unsigned char[]> input(new unsigned char[kChunkSize]);
    std::unique_ptr<unsigned char[]> output(new unsigned char[kChunkSize]);

    report = InflateReport{};
    report.state = StreamState::kEndsEarly;
    bool output_was_full = false;
    for (;;) {
        // A full output buffer may leave output pending inside zlib even with no input
        // left, so only then is running out of input not yet the end.
        if (stream.avail_in == 0 && !output_was_full) {
            const std::size_t got = std::fread(input.get(), 1, kChunkSize, in.get());
            if (got == 0) break;
            stream.next_in = input.get();
            stream.avail_in = static_cast<uInt>(got);
        }
        stream.next_out = output.get();
        stream.avail_out = kChunkSize;
        const int status = inflate(&stream, Z_NO_FLUSH);
        const std::size_t produced = kChunkSize - stream.avail_out;
        output_was_full = stream.avail_out == 0;
        if (produced > 0 && std::fwrite(output.get(), 1, produced, sink) != produced) {
            error = std::string("cannot write scratch file: ") + std::strerror(errno);
            return false;
        }
        report.inflated_size += produced;
        if (status == Z_STREAM_END) {
            report.state = StreamState::kComplete;
            report.trailing_bytes = stream.avail_in + count_rest(in.get(), input.get());
            break;
        }
        if (status != Z_OK && status != Z_BUF_ERROR) {
            report.state = StreamState::kCorrupt;
            report.detail = stream.msg != nullptr ? stream.msg : "invalid deflate data";
            break;
        }
        if (report.inflated_size > kLargestInflatedKit) {
            report.state = StreamState::kTooLarge;
            break;
        }
    }
    report.consumed = stream.total_in;
    if (std::ferror(in.get())) {
        error = "cannot read '" + kit_path + "': " + std::strerror(errno);
        return false;
    }
    if (std::fflush(sink) != 0) {
        error = std::string("cannot write scratch file: ") + std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace kittool
