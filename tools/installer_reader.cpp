#include "tools/installer_reader.h"

#include <utility>

#include "text/encoding.h"

namespace kittool {

namespace {

// The installer's inflation, asked to say how the stream ended.
class ReportingCompressor : public LZCompressor {
  public:
    ResultCode Decompress(const stdx::u16string& source, const stdx::u16string& destination) {
        return LZCompressor::Decompress(source, destination, &report);
    }

    StreamReport report;
};

// The reader names the table and record it was in; outside the tables the position
// means nothing to a reader of the message, so the reason stands alone.
std::string DescribeRefusal(const LoadRefusal& refusal) {
    if (refusal.reason == nullptr) return {};
    std::string where;
    switch (refusal.table) {
        case KitTable::kNone:
            return refusal.reason;
        case KitTable::kHeader:
            where = "kit header";
            break;
        case KitTable::kProducts:
            where = refusal.record == 0 ? "product table"
                                        : "product record " + std::to_string(refusal.record);
            break;
        case KitTable::kFiles:
            where = refusal.record == 0 ? "file table"
                                        : "file record " + std::to_string(refusal.record);
            break;
    }
    std::string text =
        where + " at byte " + std::to_string(refusal.position) + ": " + refusal.reason;
    const ClaimedRange& range = refusal.claimedRange;
    if (range.kitSize != 0)  // only a data range outside the kit has one
        text += " (starts at byte " + std::to_string(range.start) + ", " +
                std::to_string(range.length) + " bytes long, the kit is " +
                std::to_string(range.kitSize) + " bytes)";
    return text;
}

}  // namespace

LoadedKit LoadKit(const std::string& kitPath) {
    InstallData<ReportingCompressor, FileSystem> data;
    LoadedKit kit;
    kit.code = data.Load(stdx::from_multibyte(stdx::mbstring(kitPath.c_str())));
    data.Close();
    kit.refusal = DescribeRefusal(data.lastRefusal);
    kit.stream = data.compressor.report;
    if (kit.code == kOk) {
        kit.products = std::move(data.products);
        kit.files = std::move(data.files);
    }
    return kit;
}

std::string DescribeResultCode(ResultCode code) {
    switch (code) {
        case kOk:
            return "0 (success)";
        case kFileNotFound:
            return "2 (file not found)";
        case kPathNotFound:
            return "3 (path not found)";
        case kDamagedData:
            return "13 (damaged data)";
        case kInvalidParameter:
            return "87 (cannot be opened or read)";
        case kCannotWrite:
            return "1013 (cannot write the temporary file)";
        default:
            return std::to_string(code);
    }
}

}  // namespace kittool
