#pragma once

namespace qua::Detail
{

/// A bound on this process's descriptors, for closeOnExecFrom() where the system cannot mark a range at once.
int highestDescriptor() noexcept;

/// Marks the descriptors from @p first on to be closed when a program is executed. Async-signal-safe.
void closeOnExecFrom(int first, int highest) noexcept;
/// The same one by one, for systems without a call for ranges.
void closeOnExecOneByOne(int first, int highest) noexcept;

/// A pipe on which a forked child tells the error number of what failed before it became another program;
/// becoming one closes the child's end. Both ends lie above the standard streams.
class ReportPipe
{
public:
    ReportPipe() = default;
    ReportPipe(const ReportPipe&) = delete;
    ReportPipe& operator=(const ReportPipe&) = delete;
    ~ReportPipe();

    /// 0, or the error number.
    int open() noexcept;
    int writeEnd() const noexcept { return m_writeEnd; }
    void closeWriteEnd() noexcept;
    /// Waits until every copy of the write end is closed; 0 when nothing was told.
    int read() const noexcept;

private:
    int m_readEnd = -1;
    int m_writeEnd = -1;
};

} // namespace qua::Detail
