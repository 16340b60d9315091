#pragma once

#include "kodo/core/basic_string_ref.hpp"
#include "kodo/core/reference_count.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

#include <cstddef>
#include <iterator>
#include <string>

namespace pugi
{
struct xml_node_struct;
}

namespace Kodo
{

class DataSection;

/// Steps through the children of a section in the order of the file. Keeps the tree it walks through.
class KODO_API ConstDataSectionIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = SmartPointer<const DataSection>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = value_type;

    /// An end.
    ConstDataSectionIterator() noexcept = default;

    /// The child it stands at; not to be asked of an end.
    SmartPointer<const DataSection> operator*() const;
    ConstDataSectionIterator& operator++() noexcept;

    friend bool operator==(const ConstDataSectionIterator& a, const ConstDataSectionIterator& b) noexcept
    {
        return a.m_node == b.m_node;
    }

protected:
    friend class DataSection;
    using Tree = SmartPointer<const SafeReferenceCount>;

    ConstDataSectionIterator(const Tree& tree, pugi::xml_node_struct* node) noexcept
        : m_tree(tree), m_node(node)
    {
    }

    Tree m_tree; ///< what keeps the node
    pugi::xml_node_struct* m_node = nullptr;
};

class KODO_API DataSectionIterator : public ConstDataSectionIterator
{
public:
    using value_type = SmartPointer<DataSection>;
    using reference = value_type;

    using ConstDataSectionIterator::ConstDataSectionIterator;

    SmartPointer<DataSection> operator*() const;
    DataSectionIterator& operator++() noexcept;
};

/// One element of a definition file, with its text and its child elements. A section refers to the tree of
/// the whole file and keeps it, so that it outlives the sections it was reached through; the last one that
/// goes releases the file. Nothing changes a tree: any thread may read it, each through sections of its own
/// or shared ones.
///
/// The text of a section is all that stands directly in its element: characters and CDATA sections put
/// together, without comments and processing instructions, and without the blanks at both ends, as files are
/// written with them around a value. Attributes are not looked at.
class KODO_API DataSection : public SafeReferenceCount
{
public:
    /// Files may have this many bytes, and no more: a definition that is larger is a mistake, which would
    /// only be noticed when the memory is gone.
    static constexpr std::size_t MAX_FILE_SIZE = std::size_t{64} * 1024 * 1024;
    /// Elements may stand within one another this deep, the root being the first; code that walks a tree may
    /// therefore call itself.
    static constexpr std::size_t MAX_DEPTH = 1000;

    /// The tree of a whole file; null for a text that is not well-formed or nested too deep, with one message
    /// that has @p name, the line and the column. docs/localization.md tells what is accepted.
    static SmartPointer<DataSection> parse(const BasicStringRef<char>& text, const std::string& name);
    /// A section of that name that has nothing in it. Like parse() it throws only for want of memory.
    static SmartPointer<DataSection> makeEmpty(const std::string& name);

    /// The tag.
    virtual std::string sectionName() const;
    /// The section's own text.
    std::string asString() const;

    DataSectionIterator begin();
    DataSectionIterator end() noexcept;
    ConstDataSectionIterator begin() const;
    ConstDataSectionIterator end() const noexcept;

    /// The text of the first child with the name @p key, which may be empty, or @p defaultValue when there is
    /// no such child. A key with slashes goes down: "a/b" is the first b in the first a. The empty key is the
    /// section itself. @p flags is for formats that know several kinds of texts; nothing is asked of it here.
    std::string readString(const BasicStringRef<char>& key, const BasicStringRef<char>& defaultValue = {},
                           int flags = 0) const;

protected:
    ~DataSection() override;

private:
    friend class ConstDataSectionIterator;
    friend class DataSectionIterator;
    friend class DataSectionLoader;
    using Tree = SmartPointer<const SafeReferenceCount>;

    DataSection(const Tree& tree, pugi::xml_node_struct* node) noexcept : m_tree(tree), m_node(node) {}

    Tree m_tree;
    pugi::xml_node_struct* m_node;
};

/// Makes the section of a file that is not there yet.
class KODO_API DataSectionCreator
{
public:
    virtual ~DataSectionCreator();

    /// Null to have none. @p name is the file's, without directory and extension.
    virtual SmartPointer<DataSection> create(const std::string& name) = 0;
};

} // namespace Kodo
