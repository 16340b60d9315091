#pragma once

#include "qua/connection.hpp"
#include "qua/signal.hpp"
#include "vell/i_editor_manager.hpp"

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

/// The resources that are open in this process, in the order in which they were opened. Main thread only.
/// Observers may open and close resources while being called.
class EditorManager final : public IEditorManager
{
public:
    /// What this editor opens. Without functions it accepts every resource and saves none.
    struct Policy
    {
        std::size_t mostEditors = std::numeric_limits<std::size_t>::max();
        bool allowsNewInstance = true;
        std::function<bool(const std::string& resource)> accepts = {};
        std::function<bool(const IEditor& editor)> save = {};
    };

    EditorManager();
    explicit EditorManager(Policy policy);
    EditorManager(const EditorManager&) = delete;
    EditorManager& operator=(const EditorManager&) = delete;
    ~EditorManager() override;

    std::size_t editorCount() const override { return m_editors.size(); }
    IEditor* editorAt(std::size_t index) const override;
    /// Opens the resource, unless it is open already. Null for one that the policy does not accept.
    IEditor* openResource(const char* path, const OpenFlags& flags) override;
    IEditor* findEditor(const char* path) const override;
    IEditor* activeEditor() const override { return m_active; }
    bool setActiveEditor(IEditor* editor) override;
    bool canOpen(const char* path) const override;
    bool isModified(const IEditor* editor) const override;
    bool save(IEditor* editor) override;
    bool saveAll() override;
    /// A modified resource stays open: it is saved or marked as unmodified first.
    bool close(IEditor* editor) override;
    bool closeAll() override;
    /// As the policy says, once something is open here. A process that took nothing starts none: one that
    /// refuses the same resources would start the next, and so on without end.
    bool allowsNewInstance() override;

    void setModified(const IEditor* editor, bool modified);
    /// Resources that were opened to be remembered, the latest first, each once.
    const std::vector<std::string>& recentResources() const noexcept { return m_recent; }

    [[nodiscard]] qua::Connection connectOpened(std::function<void(IEditor& editor)> slot);
    /// Called for a resource that is to be read again.
    [[nodiscard]] qua::Connection connectReloaded(std::function<void(IEditor& editor)> slot);
    [[nodiscard]] qua::Connection connectClosed(std::function<void(const std::string& resource)> slot);

private:
    class Editor;

    std::shared_ptr<Editor> find(const IEditor* editor) const;
    void remember(const std::string& resource);

    Policy m_policy;
    std::vector<std::shared_ptr<Editor>> m_editors; ///< shared with the calls that announce them
    IEditor* m_active = nullptr;
    std::vector<std::string> m_recent;
    qua::Signal<void(IEditor&)> m_opened;
    qua::Signal<void(IEditor&)> m_reloaded;
    qua::Signal<void(const std::string&)> m_closed;
};
