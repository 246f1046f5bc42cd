// The subset of Win32 that the library calls, for systems that don't have it.
// Names, numbers and meaning are Win32's; what stands behind them is SDL2 and
// POSIX. All calls belong to the thread that makes the windows.
#pragma once

#include "tarvix/types.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

typedef int BOOL;
typedef int INT;
typedef int LONG;
typedef int HRESULT;
typedef short SHORT;
typedef char CHAR;
typedef wchar_t WCHAR;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef unsigned short USHORT;
typedef unsigned short ATOM;
typedef unsigned int DWORD;
typedef unsigned int ULONG;
typedef unsigned int UINT;
typedef unsigned int COLORREF;
typedef long long LONGLONG;
typedef unsigned long long ULONGLONG;
typedef uintptr_t UINT_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t DWORD_PTR;
typedef uintptr_t SIZE_T;
typedef intptr_t INT_PTR;
typedef intptr_t LONG_PTR;
typedef xuparam WPARAM;
typedef xparam LPARAM;
typedef xparam LRESULT;

typedef BOOL *LPBOOL;
typedef BYTE *LPBYTE;
typedef WORD *LPWORD;
typedef DWORD *LPDWORD;
typedef LONG *LPLONG;
typedef void *LPVOID;
typedef const void *LPCVOID;
typedef char *LPSTR;
typedef const char *LPCSTR;
typedef wchar_t *LPWSTR;
typedef const wchar_t *LPCWSTR;

typedef void *HANDLE;
typedef void *HGDIOBJ;
typedef void *HGLOBAL;
typedef void *HLOCAL;
typedef HINSTANCE HMODULE;
typedef struct HBITMAP__ *HBITMAP;
typedef struct HBRUSH__ *HBRUSH;
typedef struct HPALETTE__ *HPALETTE;
typedef struct HCURSOR__ *HCURSOR;
typedef struct HICON__ *HICON;
typedef struct HMENU__ *HMENU;

#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDMETHODCALLTYPE

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)

#define LOWORD(l) ((WORD)((DWORD_PTR)(l)&0xFFFF))
#define HIWORD(l) ((WORD)(((DWORD_PTR)(l) >> 16) & 0xFFFF))
#define LOBYTE(w) ((BYTE)((DWORD_PTR)(w)&0xFF))
#define HIBYTE(w) ((BYTE)(((DWORD_PTR)(w) >> 8) & 0xFF))
#define MAKEWORD(a, b) ((WORD)((BYTE)(a) | ((WORD)(BYTE)(b) << 8)))
#define MAKELONG(a, b) ((LONG)((DWORD)(WORD)(a) | ((DWORD)(WORD)(b) << 16)))
#define MAKEWPARAM(a, b) ((WPARAM)(DWORD)MAKELONG(a, b))
#define MAKELPARAM(a, b) ((LPARAM)(DWORD)MAKELONG(a, b))
#define MAKELRESULT(a, b) ((LRESULT)(DWORD)MAKELONG(a, b))
#define MAKEINTRESOURCE(i) ((LPSTR)(ULONG_PTR)(WORD)(i))
#define MAKEINTRESOURCEA(i) MAKEINTRESOURCE(i)
#define MAKEINTATOM(i) ((LPSTR)(ULONG_PTR)(WORD)(i))

struct POINT
{
    LONG x;
    LONG y;
};

struct SIZE
{
    LONG cx;
    LONG cy;
};

/// Right and bottom lie one past the last pixel.
struct RECT
{
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

typedef POINT *LPPOINT;
typedef RECT *LPRECT;
typedef const RECT *LPCRECT;

#include "platform/win32gdi.h"
#include "platform/win32system.h"
#include "platform/win32user.h"

#include "platform/win32shell.h"
