// Compresses a byte stream into one raw deflate stream (no zlib or gzip wrapper) and
// writes it to a file as it goes, so memory use does not grow with the input. One
// writer per output; not shared between threads.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace kittool {

class RawDeflateWriter {
  public:
    RawDeflateWriter() = default;
    RawDeflateWriter(const RawDeflateWriter&) = delete;
    RawDeflateWriter& operator=(const RawDeflateWriter&) = delete;
    ~RawDeflateWriter();  // abandons an unfinished stream; the file is left to the caller

    // Starts a stream into `out` (opened for binary writing, not owned) at `level` 0-9.
    bool start(std::FILE* out, int level, std::string& error);
    bool write(const void* bytes, std::size_t count, std::string& error);
    // Ends the stream and flushes it to the file.
    bool finish(std::string& error);

    std::uint64_t bytes_written() const { return written_; }

  private:
    bool pump(int flush, std::string& error);

    z_stream stream_{};
    bool started_ = false;
    std::FILE* out_ = nullptr;
    std::uint64_t written_ = 0;
};

}  // namespace kittool
