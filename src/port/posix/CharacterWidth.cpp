#include "port/CharacterWidth.h"

#if defined(__linux__) // macOS has other names for the same headers, and a smaller table

    #include <locale.h>
    #include <wchar.h>

namespace tbScripts::port
{

namespace
{

// Widths depend on the locale of the thread. The process keeps the one it has, for scripts see it.
class Utf8Locale
{
public:
    Utf8Locale()
        : m_before(::uselocale(_known()))
    {
    }

    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

    ~Utf8Locale() { ::uselocale(m_before); }

private:
    // Null, which changes nothing, where the system has no such locale. Never released.
    static locale_t _known()
    {
        static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }

    locale_t m_before;
};

} // namespace

int characterWidth(char32_t codePoint)
{
    const Utf8Locale locale;
    return ::wcwidth(static_cast<wchar_t>(codePoint));
}

} // namespace tbScripts::port

#else

namespace tbScripts::port
{

int characterWidth(char32_t /*codePoint*/)
{
    return -1;
}

} // namespace tbScripts::port

#endif
