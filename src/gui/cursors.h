// Lists that callbacks may change while they are walked.
#pragma once

#include "tarvix/llist.h"

/// Makes cursors that were pushed on this node end their walks. Called before
/// the node goes; null means all nodes.
inline void EndWalksOn(CLList &list, const CNode *pNode)
{
    for (xlong l = 0; l < list.m_lStackDepth; ++l)
        if (!pNode || list.m_aStack[l].pNode == pNode)
            list.m_aStack[l].pNode = nullptr;
}
