#include "qua/process_start.hpp"

#include "qua/command_line.hpp"

#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include <windows.h>

namespace qua::Detail
{

namespace
{

std::error_code lastError()
{
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

std::wstring toWide(std::string_view text)
{
    if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        return {};
    }
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0'); // never more units than bytes
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

/// The path of a program by the system's own search, empty when there is none.
std::wstring locate(const std::string& program)
{
    std::wstring path(32768, L'\0');
    const DWORD length = ::SearchPathW(nullptr, toWide(program).c_str(), L".exe",
                                       static_cast<DWORD>(path.size()), path.data(), nullptr);
    path.resize(length < path.size() ? length : 0);
    const DWORD attributes = path.empty() ? INVALID_FILE_ATTRIBUTES : ::GetFileAttributesW(path.c_str());
    const bool isFile = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    return isFile ? path : std::wstring();
}

class HandleCloser
{
public:
    using pointer = HANDLE;
    void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

/// The standard streams of the new process, and the list that lets it inherit these handles and no others.
class Streams
{
public:
    explicit Streams(bool keepOutput)
    {
        SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        m_null.reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   &inheritable, OPEN_EXISTING, 0, nullptr));
        if (m_null.get() == INVALID_HANDLE_VALUE)
        {
            m_null.release();
        }
        m_output = keepOutput ? duplicate(STD_OUTPUT_HANDLE) : Handle();
        m_error = keepOutput ? duplicate(STD_ERROR_HANDLE) : Handle();
        for (const HANDLE handle : {m_null.get(), m_output.get(), m_error.get()})
        {
            if (handle != nullptr)
            {
                m_inherited[m_count++] = handle;
            }
        }
    }

    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;
    ~Streams()
    {
        if (m_list != nullptr)
        {
            ::DeleteProcThreadAttributeList(m_list);
        }
    }

    bool enter(STARTUPINFOEXW& startup)
    {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_attributes.resize(size);
        const auto list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_attributes.data());
        if (!::InitializeProcThreadAttributeList(list, 1, 0, &size))
        {
            return false;
        }
        m_list = list;
        startup.lpAttributeList = list;
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = m_null.get();
        startup.StartupInfo.hStdOutput = m_output ? m_output.get() : m_null.get();
        startup.StartupInfo.hStdError = m_error ? m_error.get() : m_null.get();
        return ::UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_inherited.data(),
                                           m_count * sizeof(HANDLE), nullptr, nullptr) != 0;
    }

private:
    static Handle duplicate(DWORD stream)
    {
        HANDLE copy = nullptr;
        const HANDLE self = ::GetCurrentProcess();
        ::DuplicateHandle(self, ::GetStdHandle(stream), self, &copy, 0, TRUE, DUPLICATE_SAME_ACCESS);
        return Handle(copy);
    }

    Handle m_null;
    Handle m_output;
    Handle m_error;
    std::array<HANDLE, 3> m_inherited{};
    std::size_t m_count = 0;
    std::vector<std::byte> m_attributes;
    LPPROC_THREAD_ATTRIBUTE_LIST m_list = nullptr; ///< in m_attributes, once initialised
};

} // namespace

std::error_code startDetached(const std::string& commandLine, const std::string& workingDirectory,
                              bool keepOutput)
{
    ProgramCandidates candidates(commandLine);
    while (const auto candidate = candidates.next())
    {
        const std::wstring file = locate(candidate->program);
        if (file.empty())
        {
            continue;
        }
        // Quoted anew: the new process cuts an unquoted argument 0 at its first blank, whatever was found.
        std::wstring line = L'"' + toWide(candidate->program) + L'"' +
                            toWide(std::string_view(commandLine).substr(candidate->argumentsAt));
        Streams streams(keepOutput);
        STARTUPINFOEXW startup{};
        startup.StartupInfo.cb = sizeof startup;
        if (!streams.enter(startup))
        {
            return lastError();
        }
        PROCESS_INFORMATION process{};
        const BOOL started =
            ::CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, TRUE,
                             DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP | EXTENDED_STARTUPINFO_PRESENT,
                             nullptr, toWide(workingDirectory).c_str(), &startup.StartupInfo, &process);
        const std::error_code error = started ? std::error_code() : lastError();
        if (started)
        {
            ::CloseHandle(process.hThread);
            ::CloseHandle(process.hProcess);
        }
        return error;
    }
    return std::make_error_code(std::errc::no_such_file_or_directory);
}

} // namespace qua::Detail
