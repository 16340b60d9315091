#include "kodo/fs/data_section.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/fs/data_section_loader.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <new>
#include <string_view>

namespace Kodo
{

namespace
{

constexpr std::string_view BLANKS = " \t\r\n";
constexpr const char* LOOSE_TEXT = "Text outside of the root element";

bool isElement(const pugi::xml_node& node) noexcept
{
    return node.type() == pugi::node_element;
}

/// The first element among a node and the ones behind it.
pugi::xml_node elementFrom(pugi::xml_node node) noexcept
{
    while (node && !isElement(node))
    {
        node = node.next_sibling();
    }
    return node;
}

pugi::xml_node childNamed(const pugi::xml_node& parent, std::string_view name) noexcept
{
    pugi::xml_node child = elementFrom(parent.first_child());
    while (child && child.name() != name)
    {
        child = elementFrom(child.next_sibling());
    }
    return child;
}

std::string_view trimmed(std::string_view text) noexcept
{
    const std::size_t first = text.find_first_not_of(BLANKS);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(BLANKS) + 1 - first);
}

std::string textOf(const pugi::xml_node& element)
{
    // The parser keeps the text in front of all else with the element. Mostly there is nothing else.
    const std::string_view first = element.value();
    std::string whole;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling())
    {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
        {
            if (whole.empty())
            {
                whole = first;
            }
            whole += child.value();
        }
    }
    return std::string(trimmed(whole.empty() ? first : whole));
}

} // namespace

/// The document of a file and the bytes its names and texts stand in.
class DataSectionTree : public SafeReferenceCount
{
public:
    explicit DataSectionTree(FS::FileContent text) noexcept : m_text(std::move(text)) {}

    pugi::xml_document& document() noexcept { return m_document; }
    FS::FileContent& text() noexcept { return m_text; }

private:
    FS::FileContent m_text;
    pugi::xml_document m_document;
};

namespace
{

std::size_t placeOf(const pugi::xml_node& node) noexcept
{
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(node.offset_debug(), 0));
}

/// What the parser lets pass: more than one element, or text, outside of the root.
FS::TextFault faultOutsideRoot(const pugi::xml_document& document, std::size_t size)
{
    pugi::xml_node root;
    for (const pugi::xml_node node : document)
    {
        const bool isText = node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
        if (isText || (isElement(node) && root))
        {
            return {isText ? LOOSE_TEXT : "A second root element", placeOf(node)};
        }
        root = isElement(node) ? node : root;
    }
    return root ? FS::TextFault() : FS::TextFault{"No element", size};
}

/// Goes through the elements without a stack: it is for those that are nested too deep.
FS::TextFault faultInDepth(const pugi::xml_document& document)
{
    std::size_t depth = 0;
    pugi::xml_node node = document;
    do
    {
        if (const pugi::xml_node child = elementFrom(node.first_child()))
        {
            node = child;
            if (++depth > DataSection::MAX_DEPTH)
            {
                return {"Elements are nested deeper than " + std::to_string(DataSection::MAX_DEPTH),
                        placeOf(node)};
            }
            continue;
        }
        pugi::xml_node next;
        while (depth > 0 && !(next = elementFrom(node.next_sibling())))
        {
            node = node.parent();
            --depth;
        }
        node = next;
    } while (depth > 0);
    return {};
}

} // namespace

SmartPointer<DataSection> DataSectionLoader::load(FS::FileContent text, FS::TextFault& fault)
{
    constexpr unsigned OPTIONS = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol |
                                 pugi::parse_embed_pcdata | pugi::parse_fragment;
    fault = FS::makeUtf8(text);
    if (fault)
    {
        return {};
    }
    const SmartPointer<DataSectionTree> tree(new DataSectionTree(std::move(text)));
    FS::FileContent& content = tree->text();
    // With the NUL at the end: the parser writes its own one over the last byte it is given.
    const pugi::xml_parse_result result = tree->document().load_buffer_inplace(
        content.data.get(), content.size + 1, OPTIONS, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) // nothing is wrong with the file
    {
        throw std::bad_alloc();
    }
    fault = result ? faultOutsideRoot(tree->document(), content.size)
                   : FS::TextFault{result.description(), static_cast<std::size_t>(result.offset)};
    if (!fault)
    {
        fault = faultInDepth(tree->document());
    }
    return fault ? SmartPointer<DataSection>() : section(tree);
}

SmartPointer<DataSection> DataSectionLoader::section(const SmartPointer<DataSectionTree>& tree)
{
    return new DataSection(tree, elementFrom(tree->document().first_child()).internal_object());
}

void DataSectionLoader::report(const std::string& name, FS::FileContent text, const FS::TextFault& fault)
{
    FS::makeUtf8(text); // as the parser saw it, before it worked on it
    std::size_t place = fault.offset;
    if (fault.what == LOOSE_TEXT) // to the parser it begins with the blanks in front of it
    {
        place = std::min(text.view().find_first_not_of(BLANKS, place), text.size);
    }
    DebugMessageHelper(0, 5).message(textPosition(name, text.view(), place) + ": " + fault.what);
}

SmartPointer<const DataSection> ConstDataSectionIterator::operator*() const
{
    return new DataSection(m_tree, m_node);
}

ConstDataSectionIterator& ConstDataSectionIterator::operator++() noexcept
{
    m_node = elementFrom(pugi::xml_node(m_node).next_sibling()).internal_object();
    return *this;
}

SmartPointer<DataSection> DataSectionIterator::operator*() const
{
    return new DataSection(m_tree, m_node);
}

DataSectionIterator& DataSectionIterator::operator++() noexcept
{
    ConstDataSectionIterator::operator++();
    return *this;
}

SmartPointer<DataSection> DataSection::parse(const BasicStringRef<char>& text, const std::string& name)
{
    const auto copy = [&text]
    {
        FS::FileContent content = FS::FileContent::ofSize(text.size());
        std::copy(text.begin(), text.end(), content.data.get());
        return content;
    };
    FS::TextFault fault;
    SmartPointer<DataSection> section = DataSectionLoader::load(copy(), fault);
    if (fault)
    {
        DataSectionLoader::report(name, copy(), fault);
    }
    return section;
}

SmartPointer<DataSection> DataSection::makeEmpty(const std::string& name)
{
    const SmartPointer<DataSectionTree> tree(new DataSectionTree({}));
    if (!tree->document().append_child(pugi::node_element).set_name(name.c_str()))
    {
        throw std::bad_alloc();
    }
    return DataSectionLoader::section(tree);
}

DataSection::~DataSection() = default;

std::string DataSection::sectionName() const
{
    return pugi::xml_node(m_node).name();
}

std::string DataSection::asString() const
{
    return textOf(pugi::xml_node(m_node));
}

DataSectionIterator DataSection::begin()
{
    return {m_tree, elementFrom(pugi::xml_node(m_node).first_child()).internal_object()};
}

DataSectionIterator DataSection::end() noexcept
{
    return {};
}

ConstDataSectionIterator DataSection::begin() const
{
    return {m_tree, elementFrom(pugi::xml_node(m_node).first_child()).internal_object()};
}

ConstDataSectionIterator DataSection::end() const noexcept
{
    return {};
}

std::string DataSection::readString(const BasicStringRef<char>& key, const BasicStringRef<char>& defaultValue,
                                    int) const
{
    pugi::xml_node node(m_node);
    for (std::string_view rest = key.view(); node && !rest.empty();)
    {
        const std::size_t slash = std::min(rest.find('/'), rest.size());
        node = childNamed(node, rest.substr(0, slash));
        rest.remove_prefix(std::min(slash + 1, rest.size()));
    }
    return node ? textOf(node) : defaultValue.toString();
}

DataSectionCreator::~DataSectionCreator() = default;

} // namespace Kodo
