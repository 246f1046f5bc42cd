// Shell links, kept as .desktop files.
#include "platform/shelllink.h"
#include "platform/codepage.h"
#include "platform/path.h"
#include "platform/process.h"

#include <errno.h>
#include <new>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// Keeps arguments as they were given; the command line has them in another form.
const char s_szArgumentsKey[] = "X-Tarvix-Arguments";

/// Values escape what would end or change a line.
void AddValue(CText &file, const char *pszKey, const char *pszValue)
{
    file.Add(pszKey).Add('=');
    for (const char *p = pszValue; *p; ++p)
    {
        switch (*p)
        {
        case '\\':
            file.Add("\\\\");
            break;
        case '\n':
            file.Add("\\n");
            break;
        case '\r':
            file.Add("\\r");
            break;
        case '\t':
            file.Add("\\t");
            break;
        case ' ':
            // Blanks at the start would be lost.
            file.Add(p == pszValue ? "\\s" : " ");
            break;
        default:
            file.Add(*p);
            break;
        }
    }
    file.Add('\n');
}

void Unescape(const char *pszValue, CText &text)
{
    for (const char *p = pszValue; *p; ++p)
    {
        if (*p != '\\' || !p[1])
        {
            text.Add(*p);
            continue;
        }
        ++p;
        text.Add(*p == 's' ? ' ' : *p == 'n' ? '\n' : *p == 't' ? '\t' : *p == 'r' ? '\r' : *p);
    }
}

/// One word of a command line. Percent signs would stand for files to open.
void AddWord(CText &line, const char *pszWord)
{
    if (line.Length())
        line.Add(' ');
    line.Add('"');
    for (const char *p = pszWord; *p; ++p)
    {
        if (strchr("\"`$\\", *p))
            line.Add('\\');
        if (*p == '%')
            line.Add('%');
        line.Add(*p);
    }
    line.Add('"');
}

/// Takes the next word off a command line, without field codes.
bool TakeWord(const char **ppszLine, CText &word)
{
    const char *p = *ppszLine + strspn(*ppszLine, " \t");
    if (!*p)
        return false;
    bool bQuoted = false;
    for (; *p && (bQuoted || (*p != ' ' && *p != '\t')); ++p)
    {
        if (*p == '"')
            bQuoted = !bQuoted;
        else if (*p == '\\' && p[1])
            word.Add(*++p);
        else if (*p == '%' && p[1])
        {
            ++p;
            if (*p == '%')
                word.Add('%');
        }
        else
            word.Add(*p);
    }
    *ppszLine = p;
    return true;
}

/// Puts a word into a command line of Windows' kind.
void AddArgument(CText &line, const char *pszWord)
{
    if (line.Length())
        line.Add(' ');
    if (*pszWord && !strpbrk(pszWord, " \t\""))
    {
        line.Add(pszWord);
        return;
    }
    line.Add('"');
    size_t ulSlashes = 0;
    for (const char *p = pszWord; *p; ++p)
    {
        if (*p == '"')
            for (++ulSlashes; ulSlashes; --ulSlashes)
                line.Add('\\');
        ulSlashes = *p == '\\' ? ulSlashes + 1 : 0;
        line.Add(*p);
    }
    for (; ulSlashes; --ulSlashes)
        line.Add('\\');
    line.Add('"');
}

/// Name of a link's file: bytes again, and with the ending that desktops want.
bool LinkPath(LPCOLESTR pszWide, char *pszPath)
{
    CText path;
    for (; *pszWide; ++pszWide)
    {
        const uint32_t ul = (uint32_t)*pszWide;
        char szChar[4];
        if (ul >= 0xDC80 && ul <= 0xDCFF)
            path.Add((char)(ul - 0xDC00));
        else
            path.Add(szChar, EncodeUtf8(ul & 0x1FFFFF, szChar));
    }
    if (path.Failed() || path.Length() < 1)
        return false;
    const char *pszText = path.Text();
    size_t ulLength = path.Length();
    const bool bLink = ulLength > 4 && strcasecmp(pszText + ulLength - 4, ".lnk") == 0;
    if (bLink)
        ulLength -= 4;
    CText name;
    name.Add(pszText, ulLength);
    if (bLink)
        name.Add(".desktop");
    return !name.Failed() && ResolvePath(name.Text(), pszPath);
}

HRESULT StorageError(int nErrno)
{
    switch (nErrno)
    {
    case ENOENT:
        return STG_E_FILENOTFOUND;
    case ENOTDIR:
        return STG_E_PATHNOTFOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
        return STG_E_ACCESSDENIED;
    case ENOSPC:
    case EDQUOT:
        return STG_E_MEDIUMFULL;
    case ENOMEM:
        return E_OUTOFMEMORY;
    default:
        return E_FAIL;
    }
}

HRESULT GiveText(const CText &text, LPSTR pszBuffer, int nSize)
{
    if (!pszBuffer || nSize <= 0)
        return E_INVALIDARG;
    const size_t ulLength = text.Length() < (size_t)nSize - 1 ? text.Length() : (size_t)nSize - 1;
    memcpy(pszBuffer, text.Text(), ulLength);
    pszBuffer[ulLength] = 0;
    return S_OK;
}

HRESULT TakeText(CText &text, LPCSTR psz)
{
    return text.Set(psz ? psz : "") ? S_OK : E_OUTOFMEMORY;
}

class CShellLink final : public IShellLinkA, public IPersistFile
{
public:
    HRESULT QueryInterface(REFIID iid, void **ppObject) override;
    ULONG AddRef() override { return ++m_ulReferences; }
    ULONG Release() override;

    HRESULT GetPath(LPSTR pszPath, int nSize, WIN32_FIND_DATAA *pData, DWORD ulFlags) override;
    HRESULT GetDescription(LPSTR pszText, int nSize) override { return GiveText(m_Description, pszText, nSize); }
    HRESULT SetDescription(LPCSTR pszText) override { return Change(m_Description, pszText); }
    HRESULT GetWorkingDirectory(LPSTR pszPath, int nSize) override { return GiveText(m_Folder, pszPath, nSize); }
    HRESULT SetWorkingDirectory(LPCSTR pszPath) override { return Change(m_Folder, pszPath); }
    HRESULT GetArguments(LPSTR pszText, int nSize) override { return GiveText(m_Arguments, pszText, nSize); }
    HRESULT SetArguments(LPCSTR pszText) override { return Change(m_Arguments, pszText); }
    HRESULT GetShowCmd(int *pnShow) override;
    HRESULT SetShowCmd(int nShow) override;
    HRESULT GetIconLocation(LPSTR pszPath, int nSize, int *pnIcon) override;
    HRESULT SetIconLocation(LPCSTR pszPath, int nIcon) override;
    HRESULT Resolve(HWND hWnd, DWORD ulFlags) override;
    HRESULT SetPath(LPCSTR pszPath) override { return Change(m_Path, pszPath); }

    HRESULT GetClassID(CLSID *pClass) override;
    HRESULT IsDirty() override { return m_bDirty ? S_OK : S_FALSE; }
    HRESULT Load(LPCOLESTR pszPath, DWORD ulMode) override;
    HRESULT Save(LPCOLESTR pszPath, BOOL bRemember) override;
    HRESULT SaveCompleted(LPCOLESTR) override { return S_OK; }

private:
    ~CShellLink() = default;

    HRESULT Change(CText &text, LPCSTR psz)
    {
        m_bDirty = true;
        return TakeText(text, psz);
    }
    bool TakeCommand(const char *pszLine);
    bool Write(const char *pszFile, CText &file);

    ULONG m_ulReferences = 1;
    bool m_bDirty = false;
    int m_lShow = SW_SHOWNORMAL;
    int m_lIcon = 0;
    CText m_Path;
    CText m_Arguments;
    CText m_Description;
    CText m_Folder;
    CText m_Icon;
    CText m_File; ///< where it was loaded from or saved to
};

HRESULT CShellLink::QueryInterface(REFIID iid, void **ppObject)
{
    if (!ppObject)
        return E_POINTER;
    if (iid == IID_IShellLinkA || iid == IID_IUnknown)
        *ppObject = static_cast<IShellLinkA *>(this);
    else if (iid == IID_IPersistFile)
        *ppObject = static_cast<IPersistFile *>(this);
    else
    {
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG CShellLink::Release()
{
    const ULONG ulLeft = --m_ulReferences;
    if (!ulLeft)
    {
        this->~CShellLink();
        free(this);
    }
    return ulLeft;
}

HRESULT CShellLink::GetPath(LPSTR pszPath, int nSize, WIN32_FIND_DATAA *pData, DWORD)
{
    if (pData)
    {
        memset(pData, 0, sizeof(*pData));
        const HANDLE hFind = FindFirstFileA(m_Path.Text(), pData);
        if (hFind != INVALID_HANDLE_VALUE)
            FindClose(hFind);
    }
    const HRESULT hr = GiveText(m_Path, pszPath, nSize);
    return hr == S_OK && !m_Path.Length() ? S_FALSE : hr;
}

HRESULT CShellLink::GetShowCmd(int *pnShow)
{
    if (!pnShow)
        return E_POINTER;
    *pnShow = m_lShow;
    return S_OK;
}

HRESULT CShellLink::SetShowCmd(int nShow)
{
    if (nShow != SW_SHOWNORMAL && nShow != SW_SHOWMAXIMIZED && nShow != SW_SHOWMINNOACTIVE)
        return E_INVALIDARG;
    m_lShow = nShow;
    m_bDirty = true;
    return S_OK;
}

HRESULT CShellLink::GetIconLocation(LPSTR pszPath, int nSize, int *pnIcon)
{
    if (pnIcon)
        *pnIcon = m_lIcon;
    return GiveText(m_Icon, pszPath, nSize);
}

HRESULT CShellLink::SetIconLocation(LPCSTR pszPath, int nIcon)
{
    m_lIcon = nIcon;
    return Change(m_Icon, pszPath);
}

HRESULT CShellLink::Resolve(HWND, DWORD)
{
    char szReal[PATH_MAX];
    struct stat info;
    return ResolvePath(m_Path.Text(), szReal) && stat(szReal, &info) == 0 ? S_OK : S_FALSE;
}

HRESULT CShellLink::GetClassID(CLSID *pClass)
{
    if (!pClass)
        return E_POINTER;
    *pClass = CLSID_ShellLink;
    return S_OK;
}

bool CShellLink::TakeCommand(const char *pszLine)
{
    m_Path.Clear();
    m_Arguments.Clear();
    CText word;
    if (!TakeWord(&pszLine, word) || !m_Path.Set(word.Text() ? word.Text() : ""))
        return false;
    for (word.Clear(); TakeWord(&pszLine, word); word.Clear())
    {
        if (word.Failed())
            return false;
        // A field code alone leaves nothing behind.
        if (word.Length())
            AddArgument(m_Arguments, word.Text());
    }
    return !m_Arguments.Failed();
}

HRESULT CShellLink::Load(LPCOLESTR pszPath, DWORD)
{
    char szFile[PATH_MAX];
    if (!pszPath || !LinkPath(pszPath, szFile))
        return E_INVALIDARG;
    FILE *pFile = PlatformOpenFile(szFile, "rb");
    if (!pFile)
        return StorageError(errno == ENOENT && !ParentExists(szFile) ? ENOTDIR : errno);
    CText command, arguments;
    bool bGroup = false, bCommand = false, bArguments = false;
    m_Description.Clear();
    m_Folder.Clear();
    m_Icon.Clear();
    m_lShow = SW_SHOWNORMAL;
    m_lIcon = 0;
    char *pszLine = nullptr;
    size_t ulRoom = 0;
    ssize_t nLength;
    while ((nLength = getline(&pszLine, &ulRoom, pFile)) >= 0)
    {
        while (nLength && (pszLine[nLength - 1] == '\n' || pszLine[nLength - 1] == '\r'))
            pszLine[--nLength] = 0;
        if (pszLine[0] == '[')
        {
            bGroup = strcmp(pszLine, "[Desktop Entry]") == 0;
            continue;
        }
        char *pszValue = strchr(pszLine, '=');
        if (!bGroup || !pszValue || pszLine[0] == '#')
            continue;
        char *pszKeyEnd = pszValue;
        while (pszKeyEnd > pszLine && pszKeyEnd[-1] == ' ')
            --pszKeyEnd;
        *pszKeyEnd = 0;
        ++pszValue;
        pszValue += strspn(pszValue, " ");
        CText *pText = nullptr;
        if (strcmp(pszLine, "Exec") == 0)
        {
            pText = &command;
            bCommand = true;
        }
        else if (strcmp(pszLine, s_szArgumentsKey) == 0)
        {
            pText = &arguments;
            bArguments = true;
        }
        else if (strcmp(pszLine, "Comment") == 0)
            pText = &m_Description;
        else if (strcmp(pszLine, "Path") == 0)
            pText = &m_Folder;
        else if (strcmp(pszLine, "Icon") == 0)
            pText = &m_Icon;
        if (pText)
        {
            pText->Clear();
            Unescape(pszValue, *pText);
        }
    }
    free(pszLine);
    fclose(pFile);
    if (!bCommand)
        return STG_E_INVALIDHEADER;
    if (command.Failed() || arguments.Failed() || m_Description.Failed() || m_Folder.Failed() || m_Icon.Failed())
        return E_OUTOFMEMORY;
    if (!TakeCommand(command.Text()))
        return STG_E_INVALIDHEADER;
    if (bArguments && !m_Arguments.Set(arguments.Text()))
        return E_OUTOFMEMORY;
    if (!m_File.Set(szFile))
        return E_OUTOFMEMORY;
    m_bDirty = false;
    return S_OK;
}

bool CShellLink::Write(const char *pszFile, CText &file)
{
    const char *pszName = strrchr(pszFile, '/');
    pszName = pszName ? pszName + 1 : pszFile;
    CText name, command;
    const char *pszDot = strrchr(pszName, '.');
    name.Add(pszName, pszDot && pszDot != pszName ? (size_t)(pszDot - pszName) : strlen(pszName));
    AddWord(command, m_Path.Text());
    char **ppszArguments = SplitArguments(m_Arguments.Text(), nullptr);
    for (char **ppsz = ppszArguments; ppsz && *ppsz; ++ppsz)
        AddWord(command, *ppsz);
    const bool bArguments = ppszArguments != nullptr;
    free(ppszArguments);
    if (!bArguments || name.Failed() || command.Failed())
        return false;
    file.Add("[Desktop Entry]\nType=Application\nVersion=1.0\n");
    AddValue(file, "Name", name.Text());
    AddValue(file, "Exec", command.Text());
    if (m_Description.Length())
        AddValue(file, "Comment", m_Description.Text());
    if (m_Folder.Length())
        AddValue(file, "Path", m_Folder.Text());
    if (m_Icon.Length())
        AddValue(file, "Icon", m_Icon.Text());
    if (m_Arguments.Length())
        AddValue(file, s_szArgumentsKey, m_Arguments.Text());
    return !file.Failed();
}

HRESULT CShellLink::Save(LPCOLESTR pszPath, BOOL bRemember)
{
    char szFile[PATH_MAX];
    if (pszPath ? !LinkPath(pszPath, szFile) : !m_File.Length())
        return E_INVALIDARG;
    if (!pszPath)
        strcpy(szFile, m_File.Text());
    if (!m_Path.Length())
        return E_FAIL;
    CText file;
    if (!Write(szFile, file))
        return E_OUTOFMEMORY;
    FILE *pFile = PlatformOpenFile(szFile, "wb");
    if (!pFile)
        return StorageError(errno == ENOENT && !ParentExists(szFile) ? ENOTDIR : errno);
    bool bWritten = fwrite(file.Text(), 1, file.Length(), pFile) == file.Length();
    // Desktops trust a link that may be executed.
    bWritten = fchmod(fileno(pFile), 0755) == 0 && bWritten;
    bWritten = fclose(pFile) == 0 && bWritten;
    if (!bWritten)
        return StorageError(errno);
    if (bRemember && !m_File.Set(szFile))
        return E_OUTOFMEMORY;
    m_bDirty = false;
    return S_OK;
}
} // namespace

HRESULT CreateShellLink(REFIID iid, void **ppObject)
{
    void *pMemory = malloc(sizeof(CShellLink));
    if (!pMemory)
        return E_OUTOFMEMORY;
    CShellLink *pLink = new (pMemory) CShellLink;
    const HRESULT hr = pLink->QueryInterface(iid, ppObject);
    pLink->Release();
    return hr;
}
