// wizard: what Finish does after a successful installation: picks the kit's description
// document for the interface language, decides whether it may be opened, and opens it in
// the system's viewer without a shell and without waiting for the viewer.
//
// Threads: main thread (OpenDocument forks).
#pragma once

#include <optional>
#include <vector>

#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "text/string.h"

// The description name of the first product record whose language equals `language`
// (case ignored) when that name is not empty; else that of the first "en" record, even
// when empty; else empty.
stdx::u16string description_file_name(const std::vector<config::ProductInfo>& products,
                                      const stdx::u16string& language);

// The document Finish may open: `targetDirectory` (ending in "/") joined with the
// description name, every "\" made "/". Nothing unless the name passes the kit's
// safe-name check, is the name of one of the kit's own files, and a regular file (not a
// link) stands at the path: nothing the kit does not own is ever handed to a viewer.
std::optional<stdx::mbstring> DescriptionToOpen(const InstallData<LZCompressor, FileSystem>& kit,
                                                const stdx::u16string& targetDirectory,
                                                const stdx::u16string& language);

// Starts the platform's opener (wizard/platform_compat.h) on `path` as its one argument,
// found on PATH, with its input and output on /dev/null, in a session of its own, and
// does not wait for it. False when there is no opener or it could not be started.
bool OpenDocument(const stdx::mbstring& path);
