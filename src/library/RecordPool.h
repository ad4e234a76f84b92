// Records in blocks: none ever moves, and a hundred thousand of them are a few hundred allocations.
#pragma once

#include "library/Node.h"

#include <array>
#include <memory>
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
    // An empty record, there until it is released.
    NodeRecord* add()
    {
        if (!m_free.empty()) {
            NodeRecord* record = m_free.back();
            m_free.pop_back();
            return record;
        }
        if (m_used == blockSize) {
            m_blocks.push_back(std::make_unique<Block>());
            m_used = 0;
        }
        return &(*m_blocks.back())[m_used++];
    }

    void release(NodeRecord* record)
    {
        *record = {};
        m_free.push_back(record);
    }

private:
    static constexpr size_t blockSize = 256;
    using Block = std::array<NodeRecord, blockSize>;

    std::vector<std::unique_ptr<Block>> m_blocks;
    size_t m_used = blockSize; // of the last block
    std::vector<NodeRecord*> m_free;
};

} // namespace corvelle
