#include "JsonReader.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace tbExport::json
{

namespace
{

using boost::json::error_code;
using boost::json::string_view;

// The library reads by recursion.
constexpr std::size_t MAX_DEPTH = 512;

/// Builds the tree from what the library's parser finds, as the library's own builder does, but for
/// numbers: version 1.81 reads some of them as the neighbour of the nearest double, and 0e400 as
/// NaN (JsonNumberTest).
class TreeBuilder
{
public:
    static constexpr std::size_t max_object_size = boost::json::object::max_size();
    static constexpr std::size_t max_array_size = boost::json::array::max_size();
    static constexpr std::size_t max_key_size = boost::json::string::max_size();
    static constexpr std::size_t max_string_size = boost::json::string::max_size();

    boost::json::value takeRoot() { return m_values.release(); }

    // What follows is called by the parser, under names that it gives; the size is what the text or
    // the array has come to. False ends the reading with the error.
    // NOLINTBEGIN(readability-identifier-naming)

    bool on_document_begin(error_code&)
    {
        m_values.reset();
        return true;
    }

    bool on_document_end(error_code&) { return true; }

    bool on_object_begin(error_code&) { return true; }

    bool on_object_end(std::size_t size, error_code&)
    {
        m_values.push_object(size);
        return true;
    }

    bool on_array_begin(error_code&) { return true; }

    bool on_array_end(std::size_t size, error_code&)
    {
        m_values.push_array(size);
        return true;
    }

    bool on_key_part(string_view text, std::size_t, error_code&)
    {
        m_values.push_chars(text);
        return true;
    }

    bool on_key(string_view text, std::size_t, error_code&)
    {
        m_values.push_key(text);
        return true;
    }

    bool on_string_part(string_view text, std::size_t, error_code&)
    {
        m_values.push_chars(text);
        return true;
    }

    bool on_string(string_view text, std::size_t, error_code&)
    {
        m_values.push_string(text);
        return true;
    }

    bool on_number_part(string_view, error_code&) { return true; }

    bool on_int64(std::int64_t number, string_view text, error_code&)
    {
        if (number == 0 && text.front() == '-') // integers have no such zero
            m_values.push_double(-0.0);
        else
            m_values.push_int64(number);
        return true;
    }

    bool on_uint64(std::uint64_t number, string_view, error_code&)
    {
        m_values.push_uint64(number);
        return true;
    }

    // `text` is all of the number, because the parser gets the whole document at once.
    bool on_double(double roughly, string_view text, error_code& error)
    {
        double number = 0.0;
        const std::from_chars_result read =
            std::from_chars(text.data(), text.data() + text.size(), number);
        if (read.ec == std::errc::result_out_of_range)
            number = std::fabs(roughly) < 1.0 ? std::copysign(0.0, roughly) : HUGE_VAL;
        if (std::isinf(number))
        {
            error = boost::json::error::exponent_overflow;
            return false;
        }
        m_values.push_double(number);
        return true;
    }

    bool on_bool(bool value, error_code&)
    {
        m_values.push_bool(value);
        return true;
    }

    bool on_null(error_code&)
    {
        m_values.push_null();
        return true;
    }

    bool on_comment_part(string_view, error_code&) { return true; }

    bool on_comment(string_view, error_code&) { return true; }

    // NOLINTEND(readability-identifier-naming)

private:
    boost::json::value_stack m_values;
};

} // namespace

ReadDocument readDocument(tbMemory::StringView text)
{
    boost::json::parse_options options;
    options.max_depth = MAX_DEPTH;
    options.allow_invalid_utf8 = true; // sources of scripts are any bytes
    boost::json::basic_parser<TreeBuilder> parser(options);
    parser.reset();

    ReadDocument document;
    error_code error;
    document.offset = parser.write_some(false, text.data(), text.size(), error);
    if (!error && document.offset < text.size())
        error = boost::json::error::extra_data;
    if (error)
        document.error = error.message();
    else
        document.root = parser.handler().takeRoot();
    return document;
}

} // namespace tbExport::json
