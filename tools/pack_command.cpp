#include "tools/pack_command.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "fs/file_replacement.h"
#include "kit/kit_format.h"
#include "text/encoding.h"
#include "text/utf8.h"
#include "tools/deflate_writer.h"
#include "tools/file_ptr.h"
#include "tools/file_time.h"
#include "tools/kit_tables.h"
#include "tools/product_list.h"
#include "tools/source_tree.h"
#include "tools/utf_conversion.h"

namespace kittool {

namespace {

bool convert_field(const std::string& text, const std::string& what, stdx::u16string& out,
                   std::string& error) {
    std::size_t bad_offset = 0;
    if (stdx::decode_utf8(text.data(), text.size(), out, &bad_offset)) return true;
    error = what + " is not valid UTF-8 (byte " + std::to_string(bad_offset) + ")";
    return false;
}

bool collect_products(const PackOptions& options, std::vector<config::ProductInfo>& products,
                      std::string& error) {
    std::vector<ProductText> texts;
    for (const std::string& path : options.manifest_paths)
        if (!read_manifest(path, texts, error)) return false;
    for (const std::string& option : options.product_options) {
        ProductText text;
        if (!parse_product_option(option, text, error)) return false;
        texts.push_back(text);
    }
    if (!check_languages(texts, error)) return false;
    for (const ProductText& text : texts) {
        const std::string what = "product '" + text.language + "': ";
        config::ProductInfo product;
        if (!convert_field(text.language, what + "language", product.language, error) ||
            !convert_field(text.name, what + "name", product.productName, error) ||
            !convert_field(text.vendor, what + "vendor", product.provider, error) ||
            !convert_field(text.description, what + "description", product.descriptionFile, error))
            return false;
        products.push_back(product);
    }
    return true;
}

// The installer reads either separator; the kit stores "\".
stdx::u16string KitPath(stdx::u16string path) { return stdx::replace_all(path, u"/", u"\\"); }

bool make_file_entry(const SourceFile& source, std::uint64_t offset, KitFile& entry,
                     std::string& error) {
    const std::string quoted = "file '" + source.relative_path + "'";
    if (source.relative_path.find('\\') != std::string::npos) {
        error = quoted + ": a backslash in a name would read as a folder separator";
        return false;
    }
    if (!convert_field(source.relative_path, quoted + ": name", entry.name, error)) return false;
    entry.name = KitPath(entry.name);
    if (const char* refusal = kitformat::FileNameRefusal(entry.name.data(), entry.name.size())) {
        const bool surrogate = std::strcmp(refusal, kitformat::kSurrogateInFileName) == 0;
        error = quoted + ": the installer refuses this name (" +
                (surrogate ? "it holds a character beyond U+FFFF"
                           : "it could leave the templates folder") +
                ")";
        return false;
    }
    if (!unix_seconds_to_file_time(source.modified_seconds, entry.modificationTime)) {
        error = quoted + ": modification time cannot be stored";
        return false;
    }
    if (source.size > kLargestKitField) {
        error = quoted + " is " + std::to_string(source.size) +
                " bytes; a kit holds files of at most 4294967295 bytes";
        return false;
    }
    if (offset > kLargestKitField) {
        error = quoted + " would start beyond the 4 GiB a kit can address";
        return false;
    }
    entry.offset = static_cast<std::uint32_t>(offset);
    entry.size = static_cast<std::uint32_t>(source.size);
    return true;
}

void add_warnings(const TreeListing& listing, const std::vector<config::ProductInfo>& products,
                  const std::vector<KitFile>& files, std::vector<std::string>& warnings) {
    for (const std::string& skipped : listing.skipped)
        warnings.push_back("skipped '" + skipped + "': not a regular file");
    if (products.empty())
        warnings.push_back("no product records: the installer will show its default names");
    if (files.empty()) warnings.push_back("no files: the kit installs nothing");
    bool has_english = false;
    for (const config::ProductInfo& product : products)
        has_english = has_english || stdx::compare_no_case(product.language, u"en") == 0;
    if (!products.empty() && !has_english)
        warnings.push_back(
            "no 'en' product: the installer falls back to 'en' for languages "
            "the kit lacks");
    for (const config::ProductInfo& product : products) {
        if (product.descriptionFile.empty()) continue;
        const stdx::u16string wanted = KitPath(product.descriptionFile);
        bool found = false;
        for (const KitFile& file : files) found = found || file.name == wanted;
        if (!found)
            warnings.push_back("description file '" + ToUtf8(product.descriptionFile) +
                               "' of product '" + ToUtf8(product.language) +
                               "' is not among the kit's files");
    }
}

// What has been packed so far, for the progress line when there is one.
struct PackProgress {
    ProgressLine* line = nullptr;
    ProgressCounts counts;

    void Add(std::uint64_t files, std::uint64_t bytes) {
        counts.filesDone += files;
        counts.bytesDone += bytes;
        if (line != nullptr) line->Update(counts);
    }
};

bool copy_file_into(RawDeflateWriter& writer, const SourceFile& source, PackProgress& progress,
                    std::string& error) {
    // The listing saw a regular file; a link swapped in since then is not followed.
    const int fd = open(source.full_path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    struct stat status {};
    if (fd >= 0 && (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))) {
        close(fd);
        error = "'" + source.full_path + "' is no longer a regular file";
        return false;
    }
    FilePtr in(fd >= 0 ? fdopen(fd, "rb") : nullptr);
    if (fd >= 0 && !in) close(fd);
    if (!in) {
        error = "cannot read '" + source.full_path + "': " + std::strerror(errno);
        return false;
    }
    static constexpr std::size_t kChunk = 64 * 1024;
    std::unique_ptr<unsigned char[]> chunk(new unsigned char[kChunk]);
    std::uint64_t copied = 0;
    for (;;) {
        // Ask for one byte more than still expected so that growth is noticed.
        const std::uint64_t remaining = source.size - copied;
        const std::size_t wanted =
            remaining < kChunk ? static_cast<std::size_t>(remaining) + 1 : kChunk;
        const std::size_t got = std::fread(chunk.get(), 1, wanted, in.get());
        if (got == 0) break;
        if (got > remaining) {
            error = "'" + source.full_path + "' grew while it was being packed";
            return false;
        }
        if (!writer.write(chunk.get(), got, error)) return false;
        copied += got;
        progress.Add(0, got);
    }
    if (std::ferror(in.get())) {
        error = "cannot read '" + source.full_path + "': " + std::strerror(errno);
        return false;
    }
    if (copied != source.size) {
        error = "'" + source.full_path + "' shrank while it was being packed";
        return false;
    }
    return true;
}

// Writes beside `path` and puts the kit in place only once it is complete and on the
// disk, so a failed pack leaves an earlier kit as it was.
bool WriteKit(const std::string& path, int level, const std::vector<unsigned char>& tables,
              const std::vector<SourceFile>& sources, PackProgress& progress,
              std::uint64_t& kitSize, std::string& error) {
    FileReplacement replacement;
    errno = 0;
    if (replacement.Begin(stdx::mbstring(path.c_str())) != FileReplacement::Outcome::kDone) {
        error = "cannot create '" + path + "'" +
                (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string());
        return false;
    }
    RawDeflateWriter writer;
    if (!writer.start(replacement.Stream(), level, error) ||
        !writer.write(tables.data(), tables.size(), error))
        return false;
    for (const SourceFile& source : sources) {
        if (!copy_file_into(writer, source, progress, error)) return false;
        progress.Add(1, 0);
    }
    if (!writer.finish(error)) return false;
    kitSize = writer.bytes_written();
    // The installer measures the kit with a 32-bit length.
    if (kitSize > kLargestKitField) {
        error = "the compressed kit would be " + std::to_string(kitSize) +
                " bytes; the installer reads at most 4294967295";
        return false;
    }
    switch (replacement.Commit()) {
        case FileReplacement::Outcome::kDone:
            return true;
        case FileReplacement::Outcome::kCannotWrite:
            error = std::string("cannot write the kit: ") + std::strerror(errno);
            return false;
        case FileReplacement::Outcome::kCannotCreate:
            break;
    }
    error = "cannot create '" + path + "': " + std::strerror(errno);
    return false;
}

}  // namespace

bool run_pack(const PackOptions& options, PackSummary& summary, std::string& error,
              ProgressLine* progressLine) {
    summary = PackSummary{};
    if (options.level < 0 || options.level > 9) {
        error = "compression level must be 0 to 9";
        return false;
    }
    std::vector<config::ProductInfo> products;
    if (!collect_products(options, products, error)) return false;

    TreeListing listing;
    if (!list_source_tree(options.source_dir, options.output_path, listing, error)) return false;

    std::vector<KitFile> files(listing.files.size());
    std::uint64_t data_size = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (!make_file_entry(listing.files[i], data_size, files[i], error)) return false;
        data_size += listing.files[i].size;
    }
    const std::uint32_t layout = choose_layout(products);
    const std::vector<unsigned char> tables = encode_kit_tables(layout, products, files);
    const std::uint64_t inflated_size = tables.size() + data_size;
    if (inflated_size > kLargestKitField) {
        error = "the unpacked kit would be " + std::to_string(inflated_size) +
                " bytes; a kit can address at most 4294967295";
        return false;
    }

    std::uint64_t kit_size = 0;
    PackProgress progress{progressLine, {0, files.size(), 0, data_size, {}}};
    if (!WriteKit(options.output_path, options.level, tables, listing.files, progress, kit_size,
                  error))
        return false;

    summary.layout = layout;
    summary.product_count = products.size();
    summary.file_count = files.size();
    summary.inflated_size = inflated_size;
    summary.kit_size = kit_size;
    add_warnings(listing, products, files, summary.warnings);
    return true;
}

}  // namespace kittool
