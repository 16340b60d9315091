#include "editor/requests/editor_manager.hpp"

#include <algorithm>
#include <utility>

class EditorManager::Editor final : public IEditor
{
public:
    explicit Editor(std::string resource) : m_resource(std::move(resource)) {}

    const std::string& resource() const override { return m_resource; }

    bool modified = false;

private:
    std::string m_resource;
};

EditorManager::EditorManager() = default;
EditorManager::EditorManager(Policy policy) : m_policy(std::move(policy)) {}
EditorManager::~EditorManager() = default;

IEditor* EditorManager::editorAt(std::size_t index) const
{
    return index < m_editors.size() ? m_editors[index].get() : nullptr;
}

IEditor* EditorManager::openResource(const char* path, const OpenFlags& flags)
{
    std::shared_ptr<Editor> editor = find(findEditor(path)); // kept while observers hear of it
    const bool isNew = editor == nullptr;
    if (isNew)
    {
        if (!canOpen(path))
        {
            return nullptr;
        }
        editor = m_editors.emplace_back(std::make_shared<Editor>(path));
    }
    if (flags.contains(OpenFlag::Show))
    {
        m_active = editor.get();
    }
    if (flags.contains(OpenFlag::Remember))
    {
        remember(path);
    }
    if (isNew)
    {
        m_opened(*editor);
    }
    else if (flags.contains(OpenFlag::Reload))
    {
        m_reloaded(*editor);
    }
    // An observer may have closed it again. It was opened even so, and callers only ask whether this is null.
    return editor.get();
}

IEditor* EditorManager::findEditor(const char* path) const
{
    const auto found = std::find_if(m_editors.begin(), m_editors.end(),
                                    [path](const auto& editor) { return editor->resource() == path; });
    return found == m_editors.end() ? nullptr : found->get();
}

bool EditorManager::setActiveEditor(IEditor* editor)
{
    if (find(editor) == nullptr)
    {
        return false;
    }
    m_active = editor;
    return true;
}

bool EditorManager::canOpen(const char* path) const
{
    return m_editors.size() < m_policy.mostEditors && (!m_policy.accepts || m_policy.accepts(path));
}

bool EditorManager::isModified(const IEditor* editor) const
{
    const auto known = find(editor);
    return known != nullptr && known->modified;
}

bool EditorManager::save(IEditor* editor)
{
    if (find(editor) == nullptr || !m_policy.save || !m_policy.save(*editor))
    {
        return false;
    }
    setModified(editor, false);
    return true;
}

bool EditorManager::saveAll()
{
    bool all = true;
    const std::vector<std::shared_ptr<Editor>> editors = m_editors; // saving one may open or close others
    for (const std::shared_ptr<Editor>& editor : editors)
    {
        all = (!editor->modified || save(editor.get())) && all;
    }
    return all;
}

bool EditorManager::close(IEditor* editor)
{
    const auto closed = find(editor);
    if (closed == nullptr || closed->modified)
    {
        return false;
    }
    std::erase(m_editors, closed);
    if (m_active == editor)
    {
        m_active = m_editors.empty() ? nullptr : m_editors.back().get();
    }
    m_closed(closed->resource());
    return true;
}

bool EditorManager::closeAll()
{
    for (std::size_t i = m_editors.size(); i > 0; --i)
    {
        if (i <= m_editors.size()) // an observer may have closed others
        {
            close(m_editors[i - 1].get());
        }
    }
    return m_editors.empty();
}

bool EditorManager::allowsNewInstance()
{
    return m_policy.allowsNewInstance && !m_editors.empty();
}

void EditorManager::setModified(const IEditor* editor, bool modified)
{
    if (const auto known = find(editor))
    {
        known->modified = modified;
    }
}

qua::Connection EditorManager::connectOpened(std::function<void(IEditor&)> slot)
{
    return m_opened.connect(std::move(slot));
}

qua::Connection EditorManager::connectReloaded(std::function<void(IEditor&)> slot)
{
    return m_reloaded.connect(std::move(slot));
}

qua::Connection EditorManager::connectClosed(std::function<void(const std::string&)> slot)
{
    return m_closed.connect(std::move(slot));
}

std::shared_ptr<EditorManager::Editor> EditorManager::find(const IEditor* editor) const
{
    const auto found = std::find_if(m_editors.begin(), m_editors.end(),
                                    [editor](const auto& open) { return open.get() == editor; });
    return found == m_editors.end() ? nullptr : *found;
}

void EditorManager::remember(const std::string& resource)
{
    std::erase(m_recent, resource);
    m_recent.insert(m_recent.begin(), resource);
}
