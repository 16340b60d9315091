#pragma once

#include "qua/flags.hpp"
#include "vell/export.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

/// A resource that is open in the editor. Owned by its manager, valid until it is closed.
class VELL_API IEditor
{
public:
    virtual ~IEditor();

    virtual const std::string& resource() const = 0;
};

/// The running editor as those see it who want resources opened, supplied by the host. The order of the
/// virtual functions is part of the interface: hosts are built apart from the libraries that call them. The
/// destructor counts as the first one.
class VELL_API IEditorManager
{
public:
    /// How a resource is opened.
    enum class OpenFlag : std::uint16_t
    {
        Show = 1,    ///< make it the active one
        Reload = 2,  ///< read it again where it is open already
        Remember = 4 ///< list it among the recent ones
    };
    using OpenFlags = qua::Flags<OpenFlag>;

    virtual ~IEditorManager(); // 1

    virtual std::size_t editorCount() const = 0;            // 2
    virtual IEditor* editorAt(std::size_t index) const = 0; // 3: null beyond the last
    /// Opens the resource; null when the editor does not take it.
    virtual IEditor* openResource(const char* path, const OpenFlags& flags) = 0; // 4
    virtual IEditor* findEditor(const char* path) const = 0;  // 5: null when it is not open
    virtual IEditor* activeEditor() const = 0;                // 6: null when there is none
    virtual bool setActiveEditor(IEditor* editor) = 0;        // 7: false for one that is not open here
    virtual bool canOpen(const char* path) const = 0;         // 8
    virtual bool isModified(const IEditor* editor) const = 0; // 9
    virtual bool save(IEditor* editor) = 0;                   // 10
    virtual bool saveAll() = 0;                               // 11
    virtual bool close(IEditor* editor) = 0;                  // 12: false when it stays open
    virtual bool closeAll() = 0;                              // 13
    /// Whether resources that this editor did not take may go to a new editor process.
    virtual bool allowsNewInstance() = 0; // 14
};
