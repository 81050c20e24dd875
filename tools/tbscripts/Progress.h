#pragma once

#include <cstddef>

namespace tool
{

/// A line on the terminal that says how far the work is. It is shown only if there is much to do
/// and the standard error is a terminal, and is gone at the end.
class Progress
{
public:
    explicit Progress(std::size_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// One of the `total` pieces of work is done.
    void advance();

    /// Makes room for another line. The next `advance` may show the progress again.
    void hide();

private:
    std::size_t m_total;
    std::size_t m_done = 0;
    std::size_t m_shownLetters = 0;
    bool m_isWanted;
};

} // namespace tool
