#include "tarvix/palette.h"

#include "pictures/palettesearch.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/strings.h"

#include <string.h>

namespace
{
enum
{
    PAL_HEADER = 24 // bytes before the first entry
};

// Gives the palette a copy of the name, unless it bears it already.
bool TakeName(CPalette &palette, const char *pszName)
{
    if (!pszName || (palette.m_pszName && !xStricmp(palette.m_pszName, pszName)))
        return true;
    const size_t ulSize = strlen(pszName) + 1;
    char *pszCopy = XNEW(char[ulSize]);
    if (!pszCopy)
        return false;
    memcpy(pszCopy, pszName, ulSize);
    XDELETE_ARRAY(palette.m_pszName);
    palette.m_pszName = pszCopy;
    return true;
}
} // namespace

CPalette::CPalette() : m_ucFirst(0), m_ucLast(255), m_pszName(nullptr)
{
    TakeName(*this, ".pal");
    for (xlong i = 0; i < 256; ++i)
        m_Colors[i].ucRed = m_Colors[i].ucGreen = m_Colors[i].ucBlue = (unsigned char)i;
}

CPalette::~CPalette()
{
    XDELETE_ARRAY(m_pszName);
}

xlong CPalette::Clone(const CPalette *pSource)
{
    if (!pSource)
        return 0;
    m_ucFirst = pSource->m_ucFirst;
    m_ucLast = pSource->m_ucLast;
    memmove(m_Colors, pSource->m_Colors, sizeof m_Colors);
    if (!TakeName(*this, pSource->m_pszName))
        return xErrorTxt("CPalette::Clone: Memory allocation for palette name failed.");
    return 1;
}

xlong CPalette::Load(const char *pszFileName)
{
    CFile file;
    if (!file.Open(pszFileName, FILE_READ))
        return xErrorTxt("Palette - Unable to open file");
    if (!TakeName(*this, pszFileName))
        return xErrorTxt("CPalette::Load: Memory allocation for palette name failed.");
    if (!file.Seek(PAL_HEADER, FILE_SEEK_START))
        return 0;
    for (xlong i = 0; i < 256; ++i)
    {
        signed char acEntry[4];
        for (xlong j = 0; j < 4; ++j)
            if (!file.ReadByte(&acEntry[j]))
                return 0;
        m_Colors[i].ucRed = (unsigned char)acEntry[0];
        m_Colors[i].ucGreen = (unsigned char)acEntry[1];
        m_Colors[i].ucBlue = (unsigned char)acEntry[2];
    }
    return 1;
}

xlong CPalette::SetPalette(TRGBA **ppColours)
{
    for (xlong i = 0; i < 256; ++i)
        m_Colors[i] = *ppColours[i];
    return 1;
}

xlong CPalette::SetIndex(const TRGBA *pColour, xlong lIndex)
{
    if (lIndex >= 0 && lIndex < 256)
    {
        TRGBA &entry = m_Colors[lIndex];
        entry.Set(pColour->ucRed, pColour->ucGreen, pColour->ucBlue, entry.ucAlpha);
    }
    return 1;
}

xlong CPalette::GetIndex(TRGBA *pColour, xlong lIndex) const
{
    if (lIndex < 0 || lIndex >= 256)
    {
        pColour->Set(0, 0, 0, pColour->ucAlpha);
        return 0;
    }
    const TRGBA &entry = m_Colors[lIndex];
    pColour->Set(entry.ucRed, entry.ucGreen, entry.ucBlue, pColour->ucAlpha);
    return 1;
}

xlong CPalette::FindMatch(const TRGBA *pColour) const
{
    if (m_ucFirst >= m_ucLast)
        return m_ucFirst;
    return FindNearest(m_Colors, m_ucFirst, m_ucLast, *pColour);
}

xlong CPalette::FindSecondBest(const TRGBA *pColour) const
{
    if (m_ucFirst >= m_ucLast)
        return m_ucFirst;
    return FindSecondNearest(m_Colors, m_ucFirst, m_ucLast, *pColour);
}
