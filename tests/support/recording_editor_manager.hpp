#pragma once

#include "vell/i_editor_manager.hpp"

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// Notes what it is offered and takes what it is told to.
class RecordingEditorManager : public IEditorManager
{
public:
    struct Offer
    {
        std::string path;
        unsigned flags = 0;

        friend bool operator==(const Offer&, const Offer&) = default;
    };

    std::set<std::string> accepted; ///< resources to take
    bool acceptsAll = false;
    bool newInstanceAllowed = true;
    std::function<void(const char* path)> whileOpening; ///< may be empty

    std::vector<Offer> offers;
    int newInstanceQuestions = 0;

    IEditor* openResource(const char* path, const OpenFlags& flags) override
    {
        offers.push_back({path, flags.bits()});
        if (whileOpening)
        {
            whileOpening(path);
        }
        return acceptsAll || accepted.contains(path) ? &m_editor : nullptr;
    }
    bool allowsNewInstance() override
    {
        ++newInstanceQuestions;
        return newInstanceAllowed;
    }

    std::size_t editorCount() const override { return 0; }
    IEditor* editorAt(std::size_t) const override { return nullptr; }
    IEditor* findEditor(const char*) const override { return nullptr; }
    IEditor* activeEditor() const override { return nullptr; }
    bool setActiveEditor(IEditor*) override { return false; }
    bool canOpen(const char*) const override { return true; }
    bool isModified(const IEditor*) const override { return false; }
    bool save(IEditor*) override { return false; }
    bool saveAll() override { return false; }
    bool close(IEditor*) override { return false; }
    bool closeAll() override { return false; }

private:
    class Editor final : public IEditor
    {
    public:
        const std::string& resource() const override { return m_resource; }

    private:
        std::string m_resource;
    };

    Editor m_editor;
};
