#pragma once

#include "tern_common/assertion.hpp"
#include "tern_common/export.hpp"
#include "vell/variant.hpp"

#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

/// One operation that scripts can call: a fixed number of typed arguments, and a future that is ready when
/// the operation is done. Owns the callable. Main thread only; the future may be fulfilled on any thread.
class TERN_COMMON_API Command
{
public:
    /// A callable behind a type-erased call.
    class TERN_COMMON_API WrapperBase
    {
    public:
        WrapperBase() = default;
        WrapperBase(const WrapperBase&) = delete;
        WrapperBase& operator=(const WrapperBase&) = delete;
        virtual ~WrapperBase();
        /// The number of arguments the callable takes.
        virtual std::size_t argc() const = 0;
        virtual std::future<void> invoke(std::size_t argc, const vell::Variant* argv) = 0;
    };

    /// The wrapper of a callable of type @p Callable that is called as @p Signature says:
    /// std::future<void>(Args...).
    template <class Callable, class Signature>
    class Wrapper;

    explicit Command(std::unique_ptr<WrapperBase> wrapper) noexcept;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    /// A command moved from may only be assigned to or destroyed.
    Command(Command&& other) noexcept;
    Command& operator=(Command&& other) noexcept;
    ~Command();

    std::size_t argc() const;

    /// Calls the operation with the @p argc values at @p argv. A wrong count and an argument that does not
    /// cast are reported, and the call is made all the same, with value-initialised parameters in those
    /// places. What the callable throws passes through.
    std::future<void> invoke(std::size_t argc, const vell::Variant* argv) const;

private:
    std::unique_ptr<WrapperBase> m_wrapper;
};

namespace TernCommonDetail
{

/// 64-bit FNV-1a over a name's bytes. Not noexcept: libstdc++ stores the hash of a node only where computing
/// it may throw, and computing FNV-1a again at each look costs more than the memory.
struct NameHash
{
    std::uint64_t operator()(std::string_view name) const
    {
        std::uint64_t hash = 0xcbf29ce484222325U;
        for (const char c : name)
        {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
        }
        return hash;
    }
};

template <class Result, class... Args>
std::type_identity<Result(Args...)> signatureOf(Result (*)(Args...));
template <class Object, class Result, class... Args>
std::type_identity<Result(Args...)> signatureOf(Result (Object::*)(Args...));
template <class Object, class Result, class... Args>
std::type_identity<Result(Args...)> signatureOf(Result (Object::*)(Args...) const);
template <class Object, class Result, class... Args>
std::type_identity<Result(Args...)> signatureOf(Result (Object::*)(Args...) &);
template <class Object, class Result, class... Args>
std::type_identity<Result(Args...)> signatureOf(Result (Object::*)(Args...) const&);

/// The type of the call that a callable offers, such as std::future<void>(int).
template <class Callable>
struct SignatureOf
{
    using Type = typename decltype(signatureOf(&Callable::operator()))::type;
};
template <class Function>
struct SignatureOf<Function*>
{
    using Type = typename decltype(signatureOf(static_cast<Function*>(nullptr)))::type;
};

} // namespace TernCommonDetail

/// A node of the command tree: children and commands by name (case-sensitive bytes). Children are not owned:
/// who owns one removes it, or destroys this node, before the child dies. Commands are shared with copies of
/// the node. Main thread only.
class TERN_COMMON_API CommandObject
{
public:
    CommandObject();
    CommandObject(const CommandObject& other);
    CommandObject& operator=(const CommandObject& other);
    virtual ~CommandObject();

    /// A name that is taken is reported and keeps its child; a null @p object is reported and inserted.
    void addChild(std::string name, CommandObject* object);
    /// Takes the child out and leaves it alive. An unknown name is reported.
    void removeChild(const std::string& name);
    /// The child, or null.
    CommandObject* findChild(const std::string& name);

    /// The command, or null; valid while this node or a copy of it holds it.
    const Command* findCommand(const std::string& name) const;

    /// Adds a command that calls @p callable: a function pointer or an object with one operator(), which may
    /// be move-only. It returns std::future<void>. Each parameter is bool, an integer, std::string or a
    /// pointer or smart pointer that variants hold, by value or by const reference. The future of std::async
    /// waits in its own destructor; fulfil a std::promise where the tree must not wait. A name that is taken
    /// is reported and keeps its command.
    template <class Callable>
    void addCommand(std::string name, Callable callable);

private:
    friend class CommandSystem;

    /// Keeps a command alive while it runs, even where it removes the object it stands on.
    std::shared_ptr<const Command> shareCommand(const std::string& name) const;

    std::unordered_map<std::string, CommandObject*, TernCommonDetail::NameHash> m_children;
    std::unordered_map<std::string, std::shared_ptr<Command>, TernCommonDetail::NameHash> m_commands;
};

template <class Callable, class Result, class... Args>
class Command::Wrapper<Callable, Result(Args...)> final : public Command::WrapperBase
{
    static_assert(std::is_same_v<Result, std::future<void>>, "a command returns std::future<void>");
    static_assert(((!std::is_lvalue_reference_v<Args> ||
                    std::is_const_v<std::remove_reference_t<Args>>)&&...),
                  "a command takes its parameters by value or by const reference");

public:
    explicit Wrapper(Callable callable) : m_callable(std::move(callable)) {}

    std::size_t argc() const override { return sizeof...(Args); }

    std::future<void> invoke(std::size_t argc, const vell::Variant* argv) override
    {
        TERN_COMMON_ASSERT(argc == sizeof...(Args));
        std::tuple<std::remove_cvref_t<Args>...> values{};
        return std::apply(
            [&](auto&... a)
            {
                [[maybe_unused]] const vell::Variant* const end =
                    argv + argc; // parameters beyond keep their value
                (fill(a, argv, end), ...);
                return m_callable(static_cast<Args&&>(a)...);
            },
            values);
    }

private:
    template <class T>
    static void fill(T& a, const vell::Variant*& argv, const vell::Variant* end)
    {
        if (argv != end)
        {
            TERN_COMMON_ASSERT(argv->tryCast(a));
            ++argv;
        }
    }

    Callable m_callable;
};

template <class Callable>
void CommandObject::addCommand(std::string name, Callable callable)
{
    using Wrapper = Command::Wrapper<Callable, typename TernCommonDetail::SignatureOf<Callable>::Type>;

    TERN_COMMON_ASSERT(m_commands.find(name) == std::end(m_commands));
    m_commands.try_emplace(std::move(name),
                           std::make_shared<Command>(std::make_unique<Wrapper>(std::move(callable))));
}
