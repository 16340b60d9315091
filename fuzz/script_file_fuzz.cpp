// A script of any bytes is read to its end: the lines put together are its bytes.

#include "fuzz/check.hpp"
#include "tern_common/script_file.hpp"

#include <cstdint>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const int memory = memfd_create("script", MFD_CLOEXEC);
    FUZZ_CHECK(memory >= 0);
    FUZZ_CHECK(write(memory, data, size) == static_cast<ssize_t>(size));
    std::string expected;
    for (std::size_t i = 0; i < size; ++i)
    {
        if (data[i] != '\r' || i + 1 == size || data[i + 1] != '\n')
        {
            expected.push_back(static_cast<char>(data[i]));
        }
    }
    std::string read;
    {
        ScriptFile file(L"/proc/self/fd/" + std::to_wstring(memory));
        while (file.readLine())
        {
            for (const wchar_t c : file.line())
            {
                FUZZ_CHECK(c >= 0 && c <= 0xFF && c != L'\n');
                read.push_back(static_cast<char>(c));
            }
            read.push_back('\n');
        }
    }
    close(memory);
    if (!expected.empty() && expected.back() != '\n')
    {
        expected.push_back('\n');
    }
    FUZZ_CHECK(read == expected);
    return 0;
}
