// Records in large blocks: none ever moves, and a hundred thousand of them are a few allocations.
#pragma once

#include "library/Node.h"
#include "platform/LargeBlock.h"

#include <new>
#include <utility>
#include <vector>

namespace corvelle {

struct NodeRecord
{
    Node node;
    SeenFile seen;
};

class RecordPool
{
public:
    RecordPool() = default;
    RecordPool(RecordPool&& other) noexcept { swap(other); }
    RecordPool& operator=(RecordPool&& other) noexcept
    {
        swap(other);
        return *this;
    }
    ~RecordPool()
    {
        for (size_t block = 0; block < m_blocks.size(); ++block) {
            const size_t count = block + 1 < m_blocks.size() ? perBlock : m_used;
            for (size_t i = 0; i < count; ++i)
                records(block)[i].~NodeRecord();
        }
    }

    // An empty record, there until it is released.
    NodeRecord* add()
    {
        if (!m_free.empty()) {
            NodeRecord* record = m_free.back();
            m_free.pop_back();
            return record;
        }
        if (m_used == perBlock) {
            m_blocks.push_back(newLargeBlock());
            m_used = 0;
        }
        return new (records(m_blocks.size() - 1) + m_used++) NodeRecord();
    }

    void release(NodeRecord* record)
    {
        *record = {};
        m_free.push_back(record);
    }

private:
    static constexpr size_t perBlock = largeBlockBytes / sizeof(NodeRecord);

    NodeRecord* records(size_t block) { return static_cast<NodeRecord*>(m_blocks[block].get()); }
    void swap(RecordPool& other)
    {
        std::swap(m_blocks, other.m_blocks);
        std::swap(m_used, other.m_used);
        std::swap(m_free, other.m_free);
    }

    std::vector<LargeBlock> m_blocks;
    size_t m_used = perBlock; // records made in the last block
    std::vector<NodeRecord*> m_free;
};

} // namespace corvelle
