// A search field without a window: a query language of words and key:value tokens, an edit control, and a
// controller that keeps the two in step and applies what is typed.

#include "qua/signal.hpp"
#include "tern_common/query/query_controller.hpp"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

/// Words between spaces. A word with a colon in it is a field, and half typed while nothing follows the
/// colon.
class ShelfQuery : public Query
{
public:
    enum TokenType : int
    {
        Word,
        Field,
    };

    bool isComplete() const override
    {
        for (std::size_t index = 0; index < tokenCount(0); ++index)
        {
            if (getTokenString(index).back() == ':')
            {
                return false;
            }
        }
        return true;
    }

protected:
    bool tokenize(const std::string& text, std::vector<Token>& tokens) override
    {
        for (std::size_t pos = text.find_first_not_of(' '); pos != std::string::npos;)
        {
            const std::size_t end = std::min(text.find(' ', pos), text.size());
            const bool field = text.find(':', pos) < end;
            // The whole token is its value: size:2 and weight:2 are not the same.
            tokens.push_back({field ? Field : Word, pos, end - pos, pos, end - pos});
            pos = text.find_first_not_of(' ', end);
        }
        return text.find('?') == std::string::npos; // no question marks here
    }
};

/// What a control of a user interface would do, with its events called by hand.
class ConsoleEdit : public IQueryEdit
{
public:
    void setText(const std::string& text) override
    {
        m_text = text;
        m_textChanged();
        setCursorPos(static_cast<int>(text.size()));
    }
    const std::string& text() const override { return m_text; }
    void setCursorPos(int pos) override
    {
        m_cursor = pos;
        m_cursorChanged();
    }
    int cursorPos() const override { return m_cursor; }
    qua::Connection connectTextChanged(std::function<void()> slot) override
    {
        return m_textChanged.connect(std::move(slot));
    }
    qua::Connection connectCursorPosChanged(std::function<void()> slot) override
    {
        return m_cursorChanged.connect(std::move(slot));
    }

    void type(const std::string& text)
    {
        m_text.insert(static_cast<std::size_t>(m_cursor), text);
        m_cursor += static_cast<int>(text.size());
        m_textChanged();
        m_cursorChanged();
    }

private:
    std::string m_text;
    int m_cursor = 0;
    qua::Signal<void()> m_textChanged;
    qua::Signal<void()> m_cursorChanged;
};

/// Prints @p what and yields whether it is as expected.
bool show(const char* what, const std::string& text, const std::string& expected)
{
    std::cout << what << " [" << text << "]\n";
    return text == expected;
}

} // namespace

int main()
{
    ConsoleEdit edit;
    QueryController controller; // dies before the edit control that it is bound to
    controller.setQuery(std::make_unique<ShelfQuery>());
    controller.setEdit(&edit);
    controller.setApplyingStrategy(
        [](const Query* query, const std::function<void()>& onApplied)
        {
            if (!query->isComplete())
            {
                return false;
            }
            onApplied(); // here at once; a host that searches in the background calls it later
            return true;
        });
    const qua::Connection applied =
        controller.connectApplied([](const std::string& before, const std::string& now)
                                  { std::cout << "  applied [" << now << "] after [" << before << "]\n"; });
    const qua::Connection current = controller.connectCurrentTokenValueChanged(
        [](const QueryController& source, std::size_t)
        { std::cout << "  under the cursor [" << source.getCurrentTokenValue() << "]\n"; });

    bool fine = true;
    edit.type("tea   size:");
    fine = show("typed", edit.text(), "tea   size:") && fine;

    const auto finished = [] { std::cout << "  the search is done\n"; };
    fine = !controller.apply(finished) && fine;
    fine = show("half typed, so left as it was", edit.text(), "tea   size:") && fine;

    edit.type("2 tea");
    fine = controller.apply(finished) && fine;
    fine = show("applied", edit.text(), "tea size:2 ") && fine;

    edit.type("?");
    fine = show("refused", edit.text(), "tea size:2 ") && fine;

    controller.query()->replaceToken(0, "coffee");
    fine = show("a token replaced", edit.text(), "coffee size:2 ") && fine;

    controller.cancel();
    fine = show("cancelled", edit.text(), "tea size:2 ") && fine;
    return fine ? 0 : 1;
}
