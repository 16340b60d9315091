// An editor that opens one resource of its command line by itself and leaves the others to further processes
// of the same program: "open_request_example a.curve,b.curve -uniquePerApp".

#include "tern_common/requests/open_resources_request.hpp"
#include "vell/asset_registry.hpp"
#include "vell/i_command_line_parser.hpp"
#include "vell/i_editor_manager.hpp"

#include <cstdio>
#include <cstring>

namespace
{

class CommandLine final : public vell::ICommandLineParser
{
public:
    CommandLine(int argc, char** argv) : m_argc(argc), m_argv(argv) {}

    const int& argc() const override { return m_argc; }
    char** argv() const override { return m_argv; }
    bool getFlag(const char* name) const override
    {
        for (int i = 1; i < m_argc; ++i)
        {
            if (std::strcmp(m_argv[i], name) == 0)
            {
                return true;
            }
        }
        return false;
    }

private:
    int m_argc;
    char** m_argv;
};

/// Opens whatever it is offered, and says so.
class PrintingEditorManager final : public IEditorManager
{
public:
    IEditor* openResource(const char* path, const OpenFlags&) override
    {
        std::printf("opened %s\n", path);
        m_editor.name = path;
        return &m_editor;
    }
    bool allowsNewInstance() override { return true; }

    std::size_t editorCount() const override { return m_editor.name.empty() ? 0 : 1; }
    IEditor* editorAt(std::size_t) const override { return nullptr; }
    IEditor* findEditor(const char*) const override { return nullptr; }
    IEditor* activeEditor() const override { return nullptr; }
    bool setActiveEditor(IEditor*) override { return false; }
    bool canOpen(const char*) const override { return true; }
    bool isModified(const IEditor*) const override { return false; }
    bool save(IEditor*) override { return false; }
    bool saveAll() override { return true; }
    bool close(IEditor*) override { return false; }
    bool closeAll() override { return false; }

private:
    class Editor final : public IEditor
    {
    public:
        const std::string& resource() const override { return name; }

        std::string name;
    };

    Editor m_editor;
};

} // namespace

int main(int argc, char** argv)
{
    vell::AssetRegistry::instance().setType("curve", "Curve");
    const auto request = vell::OpenResourcesRequest::createFromArgs(CommandLine(argc, argv));
    std::printf("%zu resources asked for\n", request->resources().size());

    PrintingEditorManager manager;
    request->exec(&manager, false);
    return 0;
}
