#include "rows/BareJson.h"

#include "support/Failure.h"

#include <boost/json/src.hpp>

namespace bench
{

struct BareJson::Tree
{
    boost::json::value root;
};

BareJson::BareJson(const std::string& text)
    : m_tree(std::make_unique<Tree>())
{
    boost::json::error_code error;
    m_tree->root = boost::json::parse(text, error);
    if (error)
        fail("a document is no JSON");
}

BareJson::~BareJson() = default;

std::string BareJson::print() const
{
    return boost::json::serialize(m_tree->root);
}

std::size_t BareJson::countScripts() const
{
    return m_tree->root.at("scripts").as_array().size();
}

std::string BareJson::getSources(std::size_t script) const
{
    const boost::json::string& sources =
        m_tree->root.at("scripts").at(script).at("sources").as_string();
    return std::string(sources.data(), sources.size());
}

} // namespace bench
