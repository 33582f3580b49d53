// SPDX-License-Identifier: MIT
// The extractor's listing and extraction over arbitrary bytes, in-process:
// every listed entry is printed in turn, its output capped as the plug-in
// caps what it reads.

#include "Extractor.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <clocale>

namespace {

// Accepts up to 4 MiB of entry bytes and then refuses, which ends the entry.
ssize_t capped(void* cookie, const char*, size_t size)
{
    std::size_t& written = *static_cast<std::size_t*>(cookie);
    if (written + size > (std::size_t(4) << 20))
        return -1;
    written += size;
    return ssize_t(size);
}

std::FILE* cappedStream(std::size_t* written)
{
    cookie_io_functions_t functions {};
    functions.write = capped;
    return fopencookie(written, "w", functions);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    std::setlocale(LC_ALL, "C.UTF-8");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static std::FILE* quiet = std::fopen("/dev/null", "w");

    char* listing = nullptr;
    std::size_t listingSize = 0;
    std::FILE* out = open_memstream(&listing, &listingSize);
    if (struct archive* archive = extractor_open_memory(data, size, quiet))
        extractor_list(archive, "fuzz", out, quiet);
    std::fclose(out);

    std::vector<std::string> names;
    for (char *line = listing, *end; line && (end = std::strchr(line, '\n')); line = end + 1)
        names.emplace_back(line, end);
    std::free(listing);

    for (std::size_t i = 0; i < names.size() && i < 8; ++i) {
        std::size_t written = 0;
        std::FILE* entry = cappedStream(&written);
        if (struct archive* archive = extractor_open_memory(data, size, quiet))
            extractor_print(archive, "fuzz", names[i].c_str(), entry, quiet);
        std::fclose(entry);
    }
    return 0;
}
