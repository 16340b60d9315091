#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// What a started process found itself to be.
struct ProcessRecord
{
    std::vector<std::string> arguments;
    std::string workingDirectory;
    std::vector<std::string> descriptors;    ///< "number target" each, in order of their numbers
    std::vector<std::string> handledSignals; ///< numbers of those ignored or blocked
    int process = 0;
    int parent = 0;
    int session = 0;
};

/// Name of the environment variable with the directory that started processes write their records to.
inline constexpr const char* PROCESS_RECORDS = "TERN_PROCESS_RECORDS";

/// Writes this process's record, if the environment asks for one; true when it did.
bool writeProcessRecord(int argc, char** argv);

/// Waits until that many processes have written their records, in the order of their process ids; gives what
/// there is after half a minute.
std::vector<ProcessRecord> readProcessRecords(const std::filesystem::path& directory, std::size_t count);

/// Records written so far.
std::size_t countProcessRecords(const std::filesystem::path& directory);

/// Has started processes write their records to a directory while it lives.
class ProcessRecordScope
{
public:
    explicit ProcessRecordScope(const std::filesystem::path& directory);
    ProcessRecordScope(const ProcessRecordScope&) = delete;
    ProcessRecordScope& operator=(const ProcessRecordScope&) = delete;
    ~ProcessRecordScope();
};
