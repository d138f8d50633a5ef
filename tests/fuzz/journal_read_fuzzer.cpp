// Reads arbitrary bytes as a pass journal. The reader only parses, so nothing outside
// memory is touched; recovery acts on nothing but what it returns. Checks that what it
// keeps obeys the journal's rules and that it stops exactly after its last whole entry.
#include <cstdint>

#include "install/pass_journal.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

bool Inside(const stdx::u16string& path, const stdx::u16string& folder) {
    return path.size() > folder.size() && path.substr(0, folder.size()) == folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const journal::Contents contents = journal::Parse(data, size);
    Require(contents.wholeBytes <= size, "read past the end");
    Require(contents.damage != nullptr || contents.committed || contents.wholeBytes == size,
            "stopped early without a reason");
    const TransactionRecord& record = contents.record;
    if (record.targetDirectory.empty()) {
        Require(record.createdFiles.empty() && record.backedUpFiles.empty() &&
                    record.createdDirectories.empty() && record.backupDirectory.empty(),
                "entries without a templates directory");
        return 0;
    }
    Require(journal::IsCleanAbsolutePath(record.targetDirectory), "unclean templates directory");
    for (const auto* files : {&record.createdFiles, &record.backedUpFiles})
        for (const stdx::u16string& file : *files)
            Require(journal::IsCleanAbsolutePath(file) && Inside(file, record.targetDirectory),
                    "a file outside the templates directory");
    for (const stdx::u16string& directory : record.createdDirectories)
        Require(journal::IsCleanAbsolutePath(directory), "an unclean directory");
    // What was kept reads again whole and the same.
    const journal::Contents again = journal::Parse(data, contents.wholeBytes);
    Require(again.damage == nullptr && again.wholeBytes == contents.wholeBytes &&
                again.record.createdFiles == record.createdFiles &&
                again.record.backedUpFiles == record.backedUpFiles,
            "the kept part reads differently");
    return 0;
}
