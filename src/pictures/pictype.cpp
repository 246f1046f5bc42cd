#include "tarvix/pictype.h"

#include "pictures/scrambled.h"
#include "tarvix/crypt.h"
#include "tarvix/globals.h"
#include "tarvix/strings.h"

bool IsScrambled(CFile *pFile, unsigned short usStart, unsigned short usMask)
{
    if (!xIsFileCrypt(pFile))
        return false;
    unsigned char aucStart[2];
    const bool bRead = pFile->Read(aucStart, 2) != 0;
    return pFile->Seek(0, FILE_SEEK_START) && bRead && ((aucStart[0] | aucStart[1] << 8) & usMask) != usStart;
}

CPicType::CPicType() : m_pszError("") {}

xlong CPicType::SetError(const char *pszText, xlong lValue)
{
    m_pszError = pszText;
    return lValue;
}

const char *CPicType::GetError()
{
    return m_pszError;
}

CPicType::~CPicType()
{
    if (glb && glb->m_pPicTypeList)
        glb->m_pPicTypeList->Unregister(this);
}

CPicTypeList::CPicTypeList() = default;

CPicTypeList::~CPicTypeList()
{
    UnregisterAll();
}

xlong CPicTypeList::Register(CPicType *pType)
{
    return m_List.InsertLast(pType);
}

void CPicTypeList::Unregister(CPicType *pType)
{
    m_List.DeleteItem(pType);
}

void CPicTypeList::UnregisterAll()
{
    m_List.KillAll();
}

xlong CPicTypeList::First()
{
    return m_List.First();
}

xlong CPicTypeList::Next()
{
    return m_List.Next();
}

xlong CPicTypeList::Exists()
{
    return m_List.Exists();
}

CPicType *CPicTypeList::GetType(const char *pszFileName)
{
    const char *pszDot = pszFileName ? xStrrchr(pszFileName, '.') : nullptr;
    const char *pszExtension = pszDot ? pszDot + 1 : nullptr;
    for (m_List.First(); m_List.Exists(); m_List.Next())
    {
        CPicType *pType = (CPicType *)m_List.Get();
        if (pType->IsType(pszFileName, pszExtension))
            return pType;
    }
    return nullptr;
}

CPicType *CPicTypeList::GetDesc(const char **ppszExtension, const char **ppszDescription)
{
    CPicType *pType = (CPicType *)m_List.Get();
    if (pType)
        pType->GetDesc(ppszExtension, ppszDescription);
    return pType;
}

xlong CPicTypeList::NumTypes()
{
    return m_List.GetNumNodes();
}
