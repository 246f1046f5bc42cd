#include "gui/resources/resanim.h"

#include "screens/screenbitmap.h"
#include "tarvix/bitmap.h"
#include "tarvix/error.h"
#include "tarvix/globals.h"
#include "tarvix/resdata.h"
#include "tarvix/resgrammar.h"
#include "tarvix/screen.h"

#include <algorithm>
#include <stdint.h>

namespace
{
const xlong s_lAnyRows = 99999;

CBitmap *CutFrame(CBitmap *pSheet, const CRect &rcFrame, xlong lWidth, xlong lHeight, xlong lTrans)
{
    CScreenBase *const pScreen = glb->m_pScreen;
    const SVmode *const pMode = pScreen ? pScreen->GetActiveMode() : nullptr;
    CBitmap *const pFrame = XNEW(CBitmap);
    if (!pFrame)
        return nullptr;
    const xlong lMade = pMode && pMode->lIndexed == 1
                            ? pFrame->CreateIndex(lWidth, lHeight, 8, pScreen->GetPalette(), 0)
                            : CreateForScreen(pFrame, lWidth, lHeight);
    if (!lMade)
    {
        XDELETE(pFrame);
        return nullptr;
    }
    pFrame->Blt(pSheet, rcFrame.m_lLeft, rcFrame.m_lTop, 0, 0, lWidth, lHeight, lTrans, 1, 0);
    BringToScreen(pFrame);
    return pFrame;
}

// @return false when memory is exhausted
bool AddFrame(TCntrlAnim *pAnim, CBitmap *pSheet, const CRect &rcFrame, xlong lWidth, xlong lHeight, xlong lTrans)
{
    if (!pAnim->pSheet)
    {
        CBitmap *const pFrame = CutFrame(pSheet, rcFrame, lWidth, lHeight, lTrans);
        if (pFrame && pAnim->InsertLast(pFrame))
            return true;
        XDELETE(pFrame);
        return false;
    }
    CRect *const pFrame = XNEW(CRect(rcFrame));
    if (pFrame && pAnim->InsertLast(pFrame))
        return true;
    XDELETE(pFrame);
    return false;
}
} // namespace

TCntrlAnim *MakeCntrlAnim(CBitmap *pSheet, xlong lFrameW, xlong lFrameH, xlong lCount, xlong lPerRow, xlong lRows,
                          xlong lMode, xlong lTrans)
{
    if (!lCount)
        lCount = (xlong)std::min<int64_t>((int64_t)lPerRow * lRows, RES_MAX_FRAMES + 1);
    if (!lRows)
        lRows = s_lAnyRows;
    if (!lPerRow)
        lPerRow = lCount;
    if (lPerRow < 1 || lRows < 1 || !xIsResSize(XRES_FRAMES, lFrameW, lFrameH, lCount))
        return nullptr;
    TCntrlAnim *const pAnim = XNEW(TCntrlAnim);
    if (!pAnim)
    {
        xError(XERR_MEMORY);
        return nullptr;
    }
    pAnim->pSheet = lMode == 1 ? nullptr : pSheet;
    xlong lMade = 0;
    for (xlong lRow = 0; lRow < lRows && lMade < lCount; ++lRow)
        for (xlong lColumn = 0; lColumn < lPerRow && lMade < lCount; ++lColumn, ++lMade)
        {
            CRect rcFrame;
            rcFrame.SetXYWH(lColumn * lFrameW, lRow * lFrameH, lFrameW, lFrameH);
            if (!AddFrame(pAnim, pSheet, rcFrame, lFrameW, lFrameH, lTrans))
            {
                FreeCntrlAnim(pAnim);
                xError(XERR_MEMORY);
                return nullptr;
            }
        }
    pAnim->First(); // what a control shows first
    return pAnim;
}

void FreeCntrlAnim(TCntrlAnim *pAnim)
{
    if (!pAnim)
        return;
    for (pAnim->First(); pAnim->Exists(); pAnim->Next())
    {
        if (pAnim->pSheet)
            XDELETE((CRect *)pAnim->Get());
        else
            XDELETE((CBitmap *)pAnim->Get());
    }
    XDELETE(pAnim);
}
