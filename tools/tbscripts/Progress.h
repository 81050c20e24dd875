#pragma once

#include <cstddef>

namespace tool
{

/// A line on the terminal that shows the progress. It appears only if there is much to do and the
/// standard error is a terminal; the destructor removes the line.
class Progress
{
public:
    explicit Progress(std::size_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// One of the `total` pieces of work is done.
    void advance();

    /// Removes the line, so that another one can be printed. The next `advance` may show it again.
    void hide();

private:
    std::size_t m_total;
    std::size_t m_done = 0;
    std::size_t m_shownLetters = 0;
    bool m_isWanted;
};

} // namespace tool
