#include "vell/variant.hpp"

namespace vell
{

VariantCastError::VariantCastError(std::string text)
    : m_text(std::make_shared<const std::string>(std::move(text)))
{
}
VariantCastError::VariantCastError(const VariantCastError&) noexcept = default;
VariantCastError& VariantCastError::operator=(const VariantCastError&) noexcept = default;
VariantCastError::~VariantCastError() = default;

const char* VariantCastError::what() const noexcept
{
    return m_text->c_str();
}

namespace Detail
{

PointerValue::PointerValue(const PointerValue& other) : m_type(other.m_type)
{
    m_type->copyConstruct(m_storage, other.m_storage);
}

PointerValue::PointerValue(PointerValue&& other) noexcept : m_type(other.m_type)
{
    m_type->moveConstruct(m_storage, other.m_storage);
}

PointerValue& PointerValue::operator=(const PointerValue& other)
{
    return *this = PointerValue(other);
}

PointerValue& PointerValue::operator=(PointerValue&& other) noexcept
{
    if (this != &other)
    {
        m_type->destroy(m_storage);
        m_type = other.m_type;
        m_type->moveConstruct(m_storage, other.m_storage);
    }
    return *this;
}

PointerValue::~PointerValue()
{
    m_type->destroy(m_storage);
}

} // namespace Detail

Variant& Variant::operator=(const Variant& other)
{
    return *this = Variant(other);
}

Variant& Variant::operator=(Variant&& other) noexcept
{
    Variant taken(std::move(other));
    m_value.swap(taken.m_value);
    return *this;
}

const MetaType& Variant::type() const noexcept
{
    struct TypeOf
    {
        const MetaType& operator()(std::monostate) const { return metaType<void>(); }
        const MetaType& operator()(bool) const { return metaType<bool>(); }
        const MetaType& operator()(std::int64_t) const { return metaType<std::int64_t>(); }
        const MetaType& operator()(const std::string&) const { return metaType<std::string>(); }
        const MetaType& operator()(const Detail::PointerValue& value) const { return value.type(); }
    };
    return std::visit(TypeOf(), m_value);
}

void Variant::castError(const char* actualTypeName, const char* expectedTypeName)
{
    throw VariantCastError(std::string("a variant that holds ") + actualTypeName + " was asked for " +
                           expectedTypeName);
}

const void* Variant::peek(const std::type_info& type, std::uint32_t allowedQualifiers) const noexcept
{
    if (type == this->type().type())
    {
        struct AddressOf
        {
            const void* operator()(std::monostate) const { return nullptr; }
            const void* operator()(const bool& value) const { return &value; }
            const void* operator()(const std::int64_t& value) const { return &value; }
            const void* operator()(const std::string& value) const { return &value; }
            const void* operator()(const Detail::PointerValue& value) const { return value.value(); }
        };
        return std::visit(AddressOf(), m_value);
    }
    const volatile void* address = nullptr;
    findAddress(type, allowedQualifiers, address);
    return const_cast<const void*>(address);
}

bool Variant::findAddress(const std::type_info& target, std::uint32_t allowedQualifiers,
                          const volatile void*& address) const noexcept
{
    const auto* pointer = std::get_if<Detail::PointerValue>(&m_value);
    if (pointer == nullptr || *pointer->type().underlyingType() != target ||
        (pointer->type().qualifiers() & ~allowedQualifiers) != 0)
    {
        return false;
    }
    address = pointer->address();
    return true;
}

} // namespace vell
