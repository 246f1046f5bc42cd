// The clipboard's text. The desktop keeps it as UTF-8 with plain line feeds;
// programs see code page 1252 with the line ends of Windows.
#include "platform/codepage.h"
#include "platform/text.h"
#include "platform/window.h"

namespace
{
bool s_bOpen = false;
HWND s_hOwner = nullptr;
HGLOBAL s_hText = nullptr; ///< handed out or taken over, and the clipboard's

bool CheckOpen()
{
    if (!s_bOpen)
        SetLastError(ERROR_CLIPBOARD_NOT_OPEN);
    return s_bOpen;
}

void DropText()
{
    GlobalFree(s_hText);
    s_hText = nullptr;
}

bool IsFormat(UINT ulFormat)
{
    return ulFormat == CF_TEXT;
}

void ToProgram(const char *pszUtf8, CText *pText)
{
    uint32_t ulChar = 0, ulLast = 0;
    for (size_t ulLeft = strlen(pszUtf8); ulLeft;)
    {
        bool bInvalid = false;
        const size_t ulLength = DecodeUtf8((const unsigned char *)pszUtf8, ulLeft, &ulChar, &bInvalid);
        pszUtf8 += ulLength;
        ulLeft -= ulLength;
        if (ulChar == '\n' && ulLast != '\r')
            pText->Add('\r');
        const unsigned char ucChar = ToCodePage1252(ulChar);
        pText->Add((char)(ucChar ? ucChar : '?'));
        ulLast = ulChar;
    }
}

void ToDesktop(const char *pszText, CText *pUtf8)
{
    for (; *pszText; ++pszText)
    {
        if (pszText[0] == '\r' && pszText[1] == '\n')
            continue;
        char szChar[4];
        pUtf8->Add(szChar, EncodeUtf8(FromCodePage1252((unsigned char)*pszText), szChar));
    }
}
} // namespace

BOOL IsClipboardFormatAvailable(UINT ulFormat)
{
    return IsFormat(ulFormat) && Backend()->Start() && Backend()->HasClipboardText();
}

BOOL OpenClipboard(HWND hWnd)
{
    if (hWnd && !CheckWindow(hWnd))
        return FALSE;
    if (!Backend()->Start() || (s_bOpen && s_hOwner != hWnd))
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    s_bOpen = true;
    s_hOwner = hWnd;
    return TRUE;
}

BOOL CloseClipboard()
{
    if (!CheckOpen())
        return FALSE;
    s_bOpen = false;
    s_hOwner = nullptr;
    return TRUE;
}

BOOL EmptyClipboard()
{
    if (!CheckOpen())
        return FALSE;
    DropText();
    Backend()->SetClipboardText("");
    return TRUE;
}

HANDLE GetClipboardData(UINT ulFormat)
{
    if (!CheckOpen() || !IsFormat(ulFormat) || !Backend()->HasClipboardText())
        return nullptr;
    char *pszUtf8 = Backend()->GetClipboardText();
    if (!pszUtf8)
        return nullptr;
    CText text;
    ToProgram(pszUtf8, &text);
    free(pszUtf8);
    const HGLOBAL hText = text.Failed() ? nullptr : GlobalAlloc(GMEM_MOVEABLE, text.Length() + 1);
    if (!hText)
        return nullptr;
    memcpy(hText, text.Text(), text.Length() + 1);
    DropText();
    s_hText = hText;
    return hText;
}

HANDLE SetClipboardData(UINT ulFormat, HANDLE hMemory)
{
    if (!CheckOpen())
        return nullptr;
    if (!IsFormat(ulFormat) || !hMemory)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    CText utf8;
    ToDesktop((const char *)hMemory, &utf8);
    if (utf8.Failed() || !Backend()->SetClipboardText(utf8.Text()))
        return nullptr;
    DropText();
    s_hText = hMemory;
    return hMemory;
}

void ResetClipboard()
{
    DropText();
    s_bOpen = false;
    s_hOwner = nullptr;
}
