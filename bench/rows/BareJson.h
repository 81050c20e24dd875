#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace bench
{

/// A document in the JSON library's own tree.
class BareJson
{
public:
    /// Reads `text`; ends the program if it is no JSON.
    explicit BareJson(const std::string& text);

    BareJson(const BareJson&) = delete;
    BareJson& operator=(const BareJson&) = delete;
    ~BareJson();

    std::string print() const;

    /// For a project's list: the number of its scripts, and the sources of each.
    std::size_t countScripts() const;
    std::string getSources(std::size_t script) const;

private:
    struct Tree;
    std::unique_ptr<Tree> m_tree;
};

} // namespace bench
