#pragma once

#include "tarvix/file.h"
#include "tarvix/llist.h"
#include "tarvix/memory.h"
#include "tarvix/types.h"

class CBitmapBase;
class CRect;

/// Reader and writer of one kind of picture file. Failures give 0 and leave a
/// text that GetError returns.
class TARVIX_API CPicType
{
public:
    TARVIX_HEAP_CLASS

    CPicType();
    CPicType(const CPicType &) = default;
    CPicType &operator=(const CPicType &) = default;

    /// Reads a picture that begins at the file's start: of a chunk or an archive
    /// member, where the file stands for one. After a failure the bitmap can hold
    /// a part of the picture, which its Free releases.
    /// @param pParameters  null; no type here has any
    virtual xlong Load(CFile *pFile, CBitmapBase *pBitmap, void *pParameters) = 0;
    /// Opens the file and reads the picture.
    virtual xlong Load(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters) = 0;
    /// Writes a picture that begins at the file's start, in the same sense.
    /// @param pArea   the part to write; null for the whole picture
    /// @param lFlags  those of CBitmapBase::Save and of the type
    virtual xlong Save(CFile *pFile, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags) = 0;
    virtual xlong Save(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters, CRect *pArea,
                       xlong lFlags) = 0;
    /// @param pszExtension  without the dot; null gives 0
    /// @return not 0 if files of this name are of this type
    virtual xlong IsType(const char *pszName, const char *pszExtension) = 0;
    /// @param ppszExtension    receives the extension, not owned; may be null
    /// @param ppszDescription  receives a name for people, not owned; may be null
    virtual xlong GetDesc(const char **ppszExtension, const char **ppszDescription) = 0;
    /// @param pszText  not copied
    /// @return lValue
    virtual xlong SetError(const char *pszText, xlong lValue);
    /// The text of the last failure, not owned.
    virtual const char *GetError();
    /// Takes the type off the globals' list. Stands behind the operations that
    /// the interface counts.
    virtual ~CPicType();

    const char *m_pszError; ///< a literal
};

/// Windows bitmaps: 8 bits and more read, RLE8 and scrambled files included.
class TARVIX_API CBMPPic : public CPicType
{
public:
    /// Registers itself with the globals' list.
    CBMPPic();

    xlong Load(CFile *pFile, CBitmapBase *pBitmap, void *pParameters) override;
    xlong Load(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters) override;
    /// @param pArea   must be null
    /// @param lFlags  2: a picture of 24 bits, red first, is written upside down
    xlong Save(CFile *pFile, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags) override;
    xlong Save(const char *pszFileName, CBitmapBase *pBitmap, void *pParameters, CRect *pArea, xlong lFlags) override;
    xlong IsType(const char *pszName, const char *pszExtension) override;
    xlong GetDesc(const char **ppszExtension, const char **ppszDescription) override;

    xlong m_bCrypt; ///< the file being loaded is scrambled

private:
    xlong FileRead(CFile *pFile, void *pBuffer, xulong ulLen);
    xlong FileReadbyte(CFile *pFile, unsigned char *pucValue);
    xlong ReadColourTable(CFile *pFile, CBitmapBase *pBitmap, xulong ulColours);
    xlong ReadRows(CFile *pFile, CBitmapBase *pBitmap);
    xlong ReadRuns(CFile *pFile, CBitmapBase *pBitmap);
};

/// The picture types, in order of registration. The list does not own them.
class TARVIX_API CPicTypeList
{
public:
    TARVIX_HEAP_CLASS

    CPicTypeList();
    CPicTypeList(const CPicTypeList &) = default;
    CPicTypeList &operator=(const CPicTypeList &) = default;
    virtual ~CPicTypeList();

    /// @return 1; 0 when memory is exhausted
    xlong Register(CPicType *pType);
    void Unregister(CPicType *pType);
    void UnregisterAll();
    /// The walk: First, then while Exists: GetDesc, Next.
    xlong First();
    xlong Next();
    xlong Exists();
    /// @return the first type that takes the name; null if there is none
    CPicType *GetType(const char *pszFileName);
    /// Of the type at the list's present position.
    /// @return that type; null past the end
    CPicType *GetDesc(const char **ppszExtension, const char **ppszDescription);
    xlong NumTypes();

private:
    CLList m_List;
};
