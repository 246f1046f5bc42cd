// Resource data: the object, its files and its look-ups.

#include "tarvix/resdata.h"

#include "core/walk.h"
#include "gui/resources/resrecord.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"
#include "tarvix/lzss.h"
#include "tarvix/resgrammar.h"
#include "tarvix/strings.h"
#include "tarvix/systemfiles.h"
#include "tarvix/winctrl.h"

#include <stdint.h>
#include <string.h>

namespace
{
const char s_szScript[] = "; script";
const xulong s_ulScript = sizeof(s_szScript) - 1;
const char s_szPacked[] = "PRES";
const xulong s_ulPackedHeader = 12;

xlong ReadStart(const char *pszPath, void *pStart, xulong ulLen, const char *pszFault)
{
    CFile file;
    return file.Open(pszPath, FILE_READ) && file.Read(pStart, ulLen) ? 1 : xErrorTxt(pszFault);
}

// A block of the library's heap, freed at the end.
struct TBlock
{
    explicit TBlock(size_t ulSize) : p(XNEW(char[ulSize])) {}
    TBlock(const TBlock &) = delete;
    ~TBlock() { XDELETE_ARRAY(p); }

    char *const p;
};

xulong Read32(const char *pBytes)
{
    xulong ulValue = 0;
    for (int n = 3; n >= 0; --n)
        ulValue = ulValue << 8 | (unsigned char)pBytes[n];
    return ulValue;
}

// Deletes the records of a list, which are objects.
template <class TRecord>
void DeleteAll(CLList &list)
{
    for (list.First(); list.Exists(); list.Next())
        XDELETE((TRecord *)list.Get());
    list.KillAll();
}

// Most names of a table begin alike, so where a word has its last letter is
// looked at before all of it is compared.
bool IsWord(const char *pszName, const char *pszText, size_t ulWord)
{
    return strnlen(pszName, ulWord + 1) == ulWord && !((pszName[ulWord - 1] ^ pszText[ulWord - 1]) & ~32) &&
           !xStrnicmp(pszName, pszText, (xlong)ulWord);
}

template <class TRecord>
TRecord *FindId(CLList &list, xlong lId)
{
    return FindRecord<TRecord>(list, [=](const TRecord *p) { return p->lId == lId; });
}

// Colours that go away are replaced by those that the manager made itself.
void ResetColors(TCntrlColor **ppColors, TCntrlColor *const *ppOwn, const int *pnOwn, const CLList &list)
{
    for (int n = 0; n < 4; ++n)
        if (OwnsPart<TResCntrlColor>(list, ppColors[n], &TResCntrlColor::Color))
            ppColors[n] = ppOwn[pnOwn[n]];
}

void ResetBitmaps(CBitmap **ppBitmaps, int nCount, const CLList &list)
{
    for (int n = 0; n < nCount; ++n)
        if (OwnsPart<TBitmapRes>(list, ppBitmaps[n], &TBitmapRes::Bitmap))
            ppBitmaps[n] = nullptr;
}

size_t NextSum(size_t ulSum, const TResDefine *pDefine)
{
    return ulSum * 31 + (size_t)pDefine;
}

void ResetDefaults(CWinCtrl &manager, const CResData &res)
{
    static const int s_nFrame[4] = { 4, 4, 4, 4 }, s_nTitlebar[4] = { 5, 6, 6, 5 }, s_nButton[4] = { 0, 1, 2, 3 };
    ResetColors(manager.m_pDefFrameColors, manager.m_pColorSets, s_nFrame, res.m_listCntrlColors);
    ResetColors(manager.m_pDefTitlebarColors, manager.m_pColorSets, s_nTitlebar, res.m_listCntrlColors);
    ResetColors(manager.m_pDefButtonColors, manager.m_pColorSets, s_nButton, res.m_listCntrlColors);
    if (OwnsPart<TResFont>(res.m_listFonts, manager.m_pDefFont, &TResFont::Font))
        manager.m_pDefFont = nullptr;
    ResetBitmaps(&manager.m_pDefCaret, 1, res.m_listBitmaps);
    ResetBitmaps(&manager.m_pDefCheck, 1, res.m_listBitmaps);
    for (CBitmap **ppBitmaps :
         { manager.m_pDefClose, manager.m_pDefDrop, manager.m_pDefArrowUp, manager.m_pDefArrowDown })
        ResetBitmaps(ppBitmaps, 4, res.m_listBitmaps);
}
} // namespace

CResData::CResData() : m_Chains(), m_ulChained(0), m_bNoChange(false) {}

CResData::~CResData()
{
    Free();
}

xlong CResData::Load(const char *pszPath)
{
    xulong ulSize = 0;
    if (!xFileExists(pszPath))
        return xErrorTxt("CResData::Load: Res file do not exist.");
    if (!xFileSize(pszPath, &ulSize))
        return xErrorTxt("CResData::Load: Unable to get res filesize.");
    char acStart[s_ulPackedHeader];
    if (ulSize > s_ulScript)
    {
        if (!ReadStart(pszPath, acStart, s_ulScript, "CResData::Load: (ASCII RES) Unable to read header."))
            return 0;
        if (!xStrnicmp(acStart, s_szScript, s_ulScript))
        {
            if (!CKCBL::Load(pszPath))
                return xErrorTxt("CResData::Load: (ASCII RES) Unable to load kcbl packet data.");
            return SetupResources();
        }
    }
    if (ulSize > s_ulPackedHeader)
    {
        if (!ReadStart(pszPath, acStart, s_ulPackedHeader, "CResData::Load: (PRES RES) Unable to read header."))
            return 0;
        if (!memcmp(acStart, s_szPacked, sizeof(s_szPacked) - 1))
            return LoadPacked(pszPath, ulSize, Read32(acStart + 4));
    }
    return xErrorTxt("CResData::Load: The file specified is not a valid res file.");
}

xlong CResData::LoadPacked(const char *pszPath, xulong ulSize, xulong ulPacked)
{
    if ((uint64_t)ulPacked + s_ulPackedHeader != ulSize)
        return xErrorTxt("CResData::Load: (PRES RES) Unable to read file, the packed filesize is not correct.");
    const TBlock file(ulSize);
    if (!file.p)
        return xErrorTxt("CResData::Load: (PRES RES) Unable to allocate memory (packed data).");
    if (!xReadFile(pszPath, file.p, ulSize))
        return xErrorTxt("CResData::Load: (PRES RES) Unable to read packed data.");
    const char *const pPacked = file.p + s_ulPackedHeader;
    CLzss lzss;
    xulong ulText = 0;
    lzss.ExpandBuffer(pPacked, nullptr, &ulText, ulPacked);
    const TBlock text((size_t)ulText + 1);
    if (!text.p)
        return xErrorTxt("CResData::Load: (PRES RES) Unable to allocate memory (unpacked data).");
    text.p[ulText] = 0;
    if (!lzss.ExpandBuffer(pPacked, text.p, &ulText, ulPacked))
        return xErrorTxt("CResData::Load: (PRES RES) Unable to unpack data.");
    if (!CKCBL::Import(text.p, (xlong)ulText))
        return xErrorTxt("CResData::Load: (PRES RES) Unable to import kcbl packet data.");
    return SetupResources();
}

xlong CResData::Import(const char *pszText)
{
    return CKCBL::Import(pszText, 0) && SetupResources();
}

xlong CResData::Free()
{
    if (glb && glb->m_pWinCtrl)
        ResetDefaults(*glb->m_pWinCtrl, *this);
    for (m_listAnims.First(); m_listAnims.Exists(); m_listAnims.Next())
        FreeCntrlAnim(((TResAnim *)m_listAnims.Get())->pAnim);
    DeleteAll<TResAnim>(m_listAnims);
    DeleteAll<TResDefine>(m_listDefines);
    FollowDefines();
    DeleteAll<TBitmapRes>(m_listBitmaps);
    DeleteAll<TResValue>(m_listValues);
    DeleteAll<TResCntrlColor>(m_listCntrlColors);
    DeleteAll<TResFont>(m_listFonts);
    // These were made to fit, as bytes.
    m_listStrings.KillAllData();
    m_listColors.KillAllData();
    CKCBL::Free();
    return 1;
}

CResData::TChain &CResData::ChainOf(const char *pszName)
{
    // Without the bit that is the case of a letter.
    xulong ulHash = 0;
    for (; *pszName; ++pszName)
        ulHash = ulHash * 31 + (xulong)(*pszName | 32);
    return m_Chains[(ulHash ^ ulHash >> 8) & 255];
}

void CResData::Chain(TResDefine *pDefine)
{
    TChain &chain = ChainOf(pDefine->szName);
    (chain.pFirst ? chain.pLast->pNext : chain.pFirst) = pDefine;
    chain.pLast = pDefine;
    pDefine->pNext = nullptr;
    m_ulChained = NextSum(m_ulChained, pDefine);
}

// Chains anew when records have come, gone or changed places.
void CResData::FollowDefines()
{
    size_t ulSum = 0;
    for (const TResDefine *pDefine : Each<TResDefine>(m_listDefines))
        ulSum = NextSum(ulSum, pDefine);
    if (ulSum == m_ulChained)
        return;
    memset(m_Chains, 0, sizeof(m_Chains));
    m_ulChained = 0;
    for (TResDefine *pDefine : Each<TResDefine>(m_listDefines))
        Chain(pDefine);
}

xlong CResData::EnterDataChunk()
{
    MainChunk();
    RestartMode(1);
    return FindItem("{", "Data", nullptr, nullptr) && EnterChunk();
}

xlong CResData::ExitDataChunk()
{
    return ExitChunk();
}

char *CResData::GetResName(xlong lId)
{
    TResDefine *const pDefine = FindId<TResDefine>(m_listDefines, lId);
    return pDefine ? pDefine->szName : nullptr;
}

xlong CResData::GetResId(const char *pszName, xlong *plId)
{
    if (!m_bNoChange)
        FollowDefines();
    for (const TResDefine *pDefine = pszName ? ChainOf(pszName).pFirst : nullptr; pDefine; pDefine = pDefine->pNext)
        if (!xStricmp(pDefine->szName, pszName))
        {
            *plId = pDefine->lId;
            return 1;
        }
    return 0;
}

char *CResData::GetResString(xlong lId)
{
    return GetResString(lId, nullptr);
}

char *CResData::GetResString(xlong lId, char *pszDefault)
{
    TResString *const pString = FindId<TResString>(m_listStrings, lId);
    return pString ? pString->szText : pszDefault;
}

char *CResData::GetResString(const char *pszName, char *pszDefault)
{
    TResString *const pString =
        FindRecord<TResString>(m_listStrings, [=](const TResString *p) { return !xStrcmp(p->szName, pszName); });
    return pString ? pString->szText : pszDefault;
}

xlong CResData::GetResValue(xlong lId)
{
    const TResValue *const pValue = FindId<TResValue>(m_listValues, lId);
    return pValue ? pValue->lValue : xErrorTxt("No value associated with this is");
}

CFont *CResData::GetFont(const char *pszName)
{
    if (TResFont *const pFont = FindName<TResFont>(m_listFonts, pszName))
        return &pFont->Font;
    glb->m_Error.SetErrorf("The \"%s\" font hasn't been preloaded in the res file", TextOf(pszName));
    return nullptr;
}

CFont *CResData::GetFont(xlong lIndex)
{
    return GetFont(GetString(lIndex));
}

CBitmap *CResData::GetBm(const char *pszName)
{
    if (TBitmapRes *const pBitmap = FindName<TBitmapRes>(m_listBitmaps, pszName))
        return &pBitmap->Bitmap;
    glb->m_Error.SetErrorf("Unable to find the \"%s\" bitmap in the res file", TextOf(pszName));
    return nullptr;
}

CBitmap *CResData::GetBitmap(xlong lIndex)
{
    return GetBm(GetString(lIndex));
}

TCntrlAnim *CResData::GetAnim(xlong lIndex)
{
    const char *const pszName = GetString(lIndex);
    if (const TResAnim *const pAnim = FindName<TResAnim>(m_listAnims, pszName))
        return pAnim->pAnim;
    glb->m_Error.SetErrorf("Unable to find the \"%s\" anim in the res file", TextOf(pszName));
    return nullptr;
}

xlong CResData::GetResFlags(xlong lIndex, xlong *plFlags)
{
    return GetData(xResGrammar().Flags.pRows, GetString(lIndex), plFlags);
}

xlong CResData::GetHotkey(xlong lIndex, short *psKey)
{
    xlong lKey = 0;
    const xlong lResult = GetData(xResGrammar().Keys.pRows, GetString(lIndex), &lKey);
    *psKey = (short)lKey;
    return lResult;
}

xlong CResData::GetData(const TResData *pTable, const char *pszText, xlong *plResult)
{
    *plResult = 0;
    if (!pszText)
        return 0;
    if (*pszText == '0')
        return 1;
    static const char s_szSeparators[] = " \t|";
    xlong lResult = 0;
    for (pszText += strspn(pszText, s_szSeparators); *pszText; pszText += strspn(pszText, s_szSeparators))
    {
        const size_t ulWord = strcspn(pszText, s_szSeparators);
        const TResData *pRow = pTable;
        while (pRow->pszName && !IsWord(pRow->pszName, pszText, ulWord))
            ++pRow;
        if (!pRow->pszName)
            return xErrorTxt("Unknown flag");
        lResult |= pRow->lValue;
        pszText += ulWord;
    }
    *plResult = lResult;
    return 1;
}
