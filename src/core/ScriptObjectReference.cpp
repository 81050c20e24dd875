#include "tbScripts/ScriptObjectReference.h"

#include "core/ScriptObjectReferenceBlock.h"

#include "tbScripts/ScriptObjectInterpreterReference.h"
#include "tbScripts/ScriptObjectInterpreterView.h"
#include "tbScripts/ScriptObjectView.h"

#include <memory>
#include <utility>

namespace tbScripts
{

namespace
{

ScriptObjectInterpreterReference* createReferenceFrom(const ScriptObjectView& view)
{
    ScriptObjectInterpreterView* const interpreterView = view.getInterpreterView();
    return interpreterView ? interpreterView->createReference() : nullptr;
}

} // namespace

ScriptObjectReference::SharedBlock ScriptObjectReference::PERMANENT_BLOCK;

constexpr ScriptObjectReference::ScriptObjectReference(SharedBlock* block) noexcept
    : m_block(block)
{
}

const ScriptObjectReference ScriptObjectReference::EMPTY(&PERMANENT_BLOCK);

ScriptObjectReference::ScriptObjectReference()
    : m_block(makeCounted<SharedBlock>().detach())
{
}

ScriptObjectReference::ScriptObjectReference(ScriptObjectInterpreterReference* reference)
{
    // Owned until the block exists: a lack of memory for the block must not leak the value.
    std::unique_ptr<ScriptObjectInterpreterReference> owned(reference);
    m_block = makeCounted<SharedBlock>().detach();
    m_block->value = owned.release();
}

ScriptObjectReference::ScriptObjectReference(const ScriptObjectView& view)
    : ScriptObjectReference(createReferenceFrom(view))
{
}

ScriptObjectReference::ScriptObjectReference(const ScriptObjectReference& other)
    : m_block(other.m_block)
{
    if (m_block == &PERMANENT_BLOCK)
    {
        // Shared, it would be filled by the first view that is assigned to a copy.
        m_block = makeCounted<SharedBlock>().detach();
        return;
    }
    ++m_block->useCount;
    Counted<SharedBlock>::hold(*m_block);
}

ScriptObjectReference::ScriptObjectReference(ScriptObjectReference&& other) noexcept
    : m_block(other.m_block)
{
    ++m_block->useCount;
    Counted<SharedBlock>::hold(*m_block);
}

ScriptObjectReference& ScriptObjectReference::operator=(const ScriptObjectReference& other)
{
    if (m_block == other.m_block)
        return *this;
    ScriptObjectReference shared(other);
    std::swap(m_block, shared.m_block);
    return *this;
}

ScriptObjectReference& ScriptObjectReference::operator=(ScriptObjectReference&& other) noexcept
{
    std::swap(m_block, other.m_block);
    return *this;
}

ScriptObjectReference& ScriptObjectReference::operator=(const ScriptObjectView& view)
{
    // Compatibility: the only holder releases its value before the new one is anchored; a shared
    // block keeps its value until then, and keeps it if the view is empty (decision 0006).
    if (!m_block->isShared())
        m_block->replaceValue(nullptr);
    m_block->useCount = 1;
    if (view.getInterpreterView())
        m_block->replaceValue(createReferenceFrom(view));
    return *this;
}

ScriptObjectReference::~ScriptObjectReference()
{
    _release();
}

ScriptObjectInterpreterReference* ScriptObjectReference::getInterpreterReference() const
{
    return m_block->value;
}

FUNCTION_PARAMETER_TYPE ScriptObjectReference::getType() const
{
    return m_block->value ? m_block->value->getType() : PARAM_TYPE_VOID;
}

std::uint32_t ScriptObjectReference::getUseCount() const
{
    return m_block->useCount;
}

void ScriptObjectReference::_release() noexcept
{
    if (m_block == &PERMANENT_BLOCK)
        return;
    if (m_block->useCount > 1)
        --m_block->useCount;
    Counted<SharedBlock>::letGo(*m_block);
    m_block = nullptr;
}

} // namespace tbScripts
