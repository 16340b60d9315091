#pragma once

namespace TernCommonDetail
{

/// Tells an operation that calls out to its host whether the object it works on still lives when it gets the
/// word back. The object keeps the head of the list of its running operations and calls endAll() in its
/// destructor. Watches live on the stack, so the newest one always goes first.
class LifeWatch
{
public:
    explicit LifeWatch(LifeWatch*& head) noexcept : m_head(&head), m_outer(head) { head = this; }
    LifeWatch(const LifeWatch&) = delete;
    LifeWatch& operator=(const LifeWatch&) = delete;
    ~LifeWatch()
    {
        if (m_head != nullptr)
        {
            *m_head = m_outer;
        }
    }

    bool isOver() const noexcept { return m_head == nullptr; }

    static void endAll(LifeWatch* head) noexcept
    {
        for (; head != nullptr; head = head->m_outer)
        {
            head->m_head = nullptr;
        }
    }

private:
    LifeWatch** m_head;
    LifeWatch* m_outer;
};

} // namespace TernCommonDetail
