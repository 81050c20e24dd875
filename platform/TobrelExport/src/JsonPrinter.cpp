#include "JsonPrinter.h"

#include "JsonTree.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/string.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

namespace tbExport::json
{

namespace
{

constexpr std::size_t BLANKS_PER_LEVEL = 2;

// Lines further down are not indented further: a deep tree would print as next to nothing but
// blanks, the square of its depth in number.
constexpr std::size_t MAX_INDENTED_LEVELS = 32;

// The deepest indentation behind a line feed. One piece is appended faster than three.
constexpr std::string_view COMMA_AND_LINE = ",\n                                "
                                            "                                ";
constexpr std::string_view LINE = COMMA_AND_LINE.substr(1);
static_assert(LINE.size() == 1 + MAX_INDENTED_LEVELS * BLANKS_PER_LEVEL);

// Integers below this size print as such: 2^63, the end of the library's integers.
constexpr double END_OF_INTEGERS = 9223372036854775808.0;

/// For each byte what it is escaped with: nothing, the letter of a short escape, or 'u'.
constexpr std::array<char, 256> makeEscapes()
{
    std::array<char, 256> escapes = {};
    for (std::size_t control = 0; control < 0x20; ++control)
        escapes[control] = 'u';
    escapes['\b'] = 'b';
    escapes['\f'] = 'f';
    escapes['\n'] = 'n';
    escapes['\r'] = 'r';
    escapes['\t'] = 't';
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    return escapes;
}

constexpr std::array<char, 256> ESCAPES = makeEscapes();

// How deep texts are looked for beforehand. What counts lies near the root.
constexpr int ESTIMATED_LEVELS = 8;

/// About how long a tree is in print, rather too long than too short: a text that grows needs the
/// memory of two.
std::size_t estimateSize(const value& tree, int levels)
{
    constexpr std::size_t AROUND = 16; // quotes, comma, indentation
    if (const boost::json::string* text = tree.if_string())
        return text->size() + text->size() / 8 + AROUND; // one byte in eight is escaped
    std::size_t size = AROUND;
    if (levels == 0)
        return size;
    if (const array* elements = tree.if_array())
    {
        for (const value& element : *elements)
            size += estimateSize(element, levels - 1);
    }
    else if (const object* members = tree.if_object())
    {
        for (const key_value_pair& member : *members)
            size += member.key().size() + estimateSize(member.value(), levels - 1);
    }
    return size;
}

char escapeOf(char byte)
{
    return ESCAPES[static_cast<unsigned char>(byte)];
}

class Printer
{
public:
    std::string print(const value& root)
    {
        m_text.reserve(estimateSize(root, ESTIMATED_LEVELS));
        _begin(root);
        while (!m_open.empty())
            _continue();
        m_text += '\n';
        return std::move(m_text);
    }

private:
    /// An array or an object that is printed up to some child.
    struct Open
    {
        const value* element;         // the next one; null in an object
        const key_value_pair* member; // the next one; null in an array
        std::size_t left;             // children still to be printed
    };

    /// Prints a value; of one with children only the bracket, the rest is for later.
    void _begin(const value& next)
    {
        if (const array* elements = next.if_array())
        {
            m_text += elements->empty() ? "[]" : "[";
            if (!elements->empty())
                m_open.push_back({elements->data(), nullptr, elements->size()});
        }
        else if (const object* members = next.if_object())
        {
            m_text += members->empty() ? "{}" : "{";
            if (!members->empty())
                m_open.push_back({nullptr, members->begin(), members->size()});
        }
        else
        {
            _printLeaf(next);
        }
    }

    /// Prints the next child of the innermost open value, or the end of that.
    void _continue()
    {
        Open& open = m_open.back();
        if (open.left == 0)
        {
            const char bracket = open.member == nullptr ? ']' : '}';
            m_open.pop_back();
            _startLine(LINE);
            m_text += bracket;
            return;
        }

        const bool isFirst = m_text.back() == '[' || m_text.back() == '{';
        _startLine(isFirst ? LINE : COMMA_AND_LINE);
        --open.left;
        if (open.member == nullptr)
        {
            _begin(*open.element++);
            return;
        }
        const key_value_pair& member = *open.member++;
        _printText(member.key());
        m_text += ": ";
        _begin(member.value());
    }

    /// `line` is what the new line begins with: as much of it as the level asks for.
    void _startLine(std::string_view line)
    {
        const std::size_t levels = std::min(m_open.size(), MAX_INDENTED_LEVELS);
        const std::size_t spare = (MAX_INDENTED_LEVELS - levels) * BLANKS_PER_LEVEL;
        m_text.append(line.data(), line.size() - spare);
    }

    void _printLeaf(const value& leaf)
    {
        switch (leaf.kind())
        {
        case boost::json::kind::bool_:
            m_text += leaf.get_bool() ? "true" : "false";
            break;
        case boost::json::kind::int64:
            _printNumber(leaf.get_int64());
            break;
        case boost::json::kind::uint64:
            _printNumber(leaf.get_uint64());
            break;
        case boost::json::kind::double_:
            _printDouble(leaf.get_double());
            break;
        case boost::json::kind::string:
            _printText(leaf.get_string());
            break;
        default:
            m_text += "null";
            break;
        }
    }

    void _printDouble(double number)
    {
        if (!std::isfinite(number))
            m_text += "null"; // JSON has no word for it
        else if (number == 0.0 && std::signbit(number))
            m_text += "-0.0"; // readers take "-0" for the integer, which has no sign
        else if (std::fabs(number) < END_OF_INTEGERS && number == std::trunc(number))
            _printNumber(static_cast<std::int64_t>(number));
        else
            _printNumber(number);
    }

    /// The shortest text that reads back as the same number.
    template <typename Number>
    void _printNumber(Number number)
    {
        char text[32];
        const std::to_chars_result end = std::to_chars(text, text + sizeof text, number);
        m_text.append(text, end.ptr);
    }

    void _printText(std::string_view text)
    {
        m_text += '"';
        const char* end = text.data() + text.size();
        for (const char* byte = text.data(); byte != end; ++byte)
        {
            const char* escaped = byte;
            while (escaped != end && escapeOf(*escaped) == 0)
                ++escaped;
            m_text.append(byte, escaped);
            if (escaped == end)
                break;
            _printEscape(*escaped);
            byte = escaped;
        }
        m_text += '"';
    }

    void _printEscape(char byte)
    {
        m_text += '\\';
        m_text += escapeOf(byte);
        if (escapeOf(byte) != 'u')
            return;
        m_text += byte < 0x10 ? "000" : "001";
        m_text += "0123456789abcdef"[byte & 0xF];
    }

    std::string m_text;
    std::vector<Open> m_open; // the outermost first
};

} // namespace

std::string printDocument(const value& root)
{
    return Printer().print(root);
}

} // namespace tbExport::json
