#include "editor/app/output_files.hpp"

#include "editor/files/file_error.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace
{

/// Whether both name one file, which need not be there yet.
bool isSameFile(const fs::path& a, const fs::path& b)
{
    std::error_code none;
    return fs::weakly_canonical(a, none) == fs::weakly_canonical(b, none) || fs::equivalent(a, b, none);
}

/// A file that the run writes, and the option that names it.
struct Output
{
    const char* option;
    fs::path file;
    bool isLevel; ///< the level, saved
};

std::vector<Output> outputsOf(const EditorOptions& options)
{
    std::vector<Output> outputs;
    const auto add = [&outputs](const char* option, const std::optional<fs::path>& file, bool isLevel)
    {
        if (file)
        {
            outputs.push_back({option, *file, isLevel});
        }
    };
    add("--save", options.save, true);
    add("--picture", options.picture, false);
    add("--trace", options.trace, false);
    return outputs;
}

} // namespace

std::optional<std::string> findOutputMistake(const EditorOptions& options)
{
    const std::vector<Output> outputs = outputsOf(options);
    for (auto output = outputs.begin(); output != outputs.end(); ++output)
    {
        const auto isOutput = [&output](const fs::path& file) { return isSameFile(file, output->file); };
        const std::string what = std::string(output->option) + " " + displayName(output->file);
        const bool isOverLevel = !output->isLevel && options.level && isOutput(*options.level);
        if (isOverLevel || std::any_of(options.scripts.begin(), options.scripts.end(), isOutput))
        {
            return what + " would destroy what is read from there";
        }
        const auto other = std::find_if(outputs.begin(), output,
                                        [&isOutput](const Output& before) { return isOutput(before.file); });
        if (other != output)
        {
            return what + " would destroy what " + other->option + " writes there";
        }
    }
    return std::nullopt;
}
