#include "tests/support/process_record.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

constexpr std::string_view SUFFIX = ".record";

/// Lists of texts, each text with its length in front: they may hold any byte.
void writeList(std::ostream& out, const std::vector<std::string>& texts)
{
    out << texts.size() << '\n';
    for (const std::string& text : texts)
    {
        out << text.size() << '\n' << text << '\n';
    }
}

std::vector<std::string> readList(std::istream& in)
{
    std::size_t count = 0;
    in >> count;
    std::vector<std::string> texts(count);
    for (std::string& text : texts)
    {
        std::size_t size = 0;
        in >> size;
        in.get();
        text.resize(size);
        in.read(text.data(), static_cast<std::streamsize>(size));
    }
    return texts;
}

std::vector<std::string> openDescriptors()
{
    std::vector<std::string> descriptors;
    for (int number = 0; number < 4096; ++number)
    {
        std::error_code error;
        const fs::path target = fs::read_symlink("/proc/self/fd/" + std::to_string(number), error);
        if (!error)
        {
            descriptors.push_back(std::to_string(number) + " " + target.string());
        }
    }
    return descriptors;
}

std::vector<std::string> signalsNotAsFresh()
{
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, nullptr, &blocked);
    std::vector<std::string> numbers;
    for (int number = 1; number < NSIG; ++number)
    {
        struct sigaction action = {};
        const bool known = sigaction(number, nullptr, &action) == 0;
        if (known && (action.sa_handler == SIG_IGN || sigismember(&blocked, number) == 1))
        {
            numbers.push_back(std::to_string(number));
        }
    }
    return numbers;
}

ProcessRecord readRecord(const fs::path& file)
{
    std::ifstream in(file, std::ios_base::binary);
    ProcessRecord record;
    record.arguments = readList(in);
    record.workingDirectory = readList(in).at(0);
    record.descriptors = readList(in);
    record.handledSignals = readList(in);
    in >> record.process >> record.parent >> record.session;
    return record;
}

std::vector<fs::path> recordFiles(const fs::path& directory)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(directory))
    {
        if (entry.path().extension() == SUFFIX)
        {
            files.push_back(entry.path());
        }
    }
    return files;
}

} // namespace

bool writeProcessRecord(int argc, char** argv)
{
    const char* const directory = std::getenv(PROCESS_RECORDS);
    if (directory == nullptr)
    {
        return false;
    }
    const std::vector<std::string> descriptors = openDescriptors();
    const fs::path unfinished = fs::path(directory) / std::to_string(::getpid());
    {
        std::ofstream out(unfinished, std::ios_base::binary);
        writeList(out, std::vector<std::string>(argv, argv + argc));
        std::error_code ignored;
        writeList(out, {fs::current_path(ignored).string()});
        writeList(out, descriptors);
        writeList(out, signalsNotAsFresh());
        out << ::getpid() << ' ' << ::getppid() << ' ' << ::getsid(0) << '\n';
    }
    fs::rename(unfinished, fs::path(unfinished) += SUFFIX); // readers see whole records only
    return true;
}

std::vector<ProcessRecord> readProcessRecords(const fs::path& directory, std::size_t count)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (countProcessRecords(directory) < count && std::chrono::steady_clock::now() < deadline)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::vector<ProcessRecord> records;
    for (const fs::path& file : recordFiles(directory))
    {
        records.push_back(readRecord(file));
    }
    std::sort(records.begin(), records.end(),
              [](const ProcessRecord& a, const ProcessRecord& b) { return a.process < b.process; });
    return records;
}

std::size_t countProcessRecords(const fs::path& directory)
{
    return recordFiles(directory).size();
}

ProcessRecordScope::ProcessRecordScope(const fs::path& directory)
{
    ::setenv(PROCESS_RECORDS, directory.c_str(), 1);
}

ProcessRecordScope::~ProcessRecordScope()
{
    ::unsetenv(PROCESS_RECORDS);
}
