// From SDL's keys to virtual keys, scan codes and characters.
#pragma once

#include "platform/input.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

enum
{
    MAX_SDL_KEYS = 2,
};

/// @param pKeys  MAX_SDL_KEYS of them: Windows makes two of AltGr
/// @return how many; 0 for a key that Windows doesn't know
int TranslateSdlKey(const SDL_KeyboardEvent &event, TKeyEvent *pKeys);
/// Types a text that came without a key.
void TypeSdlText(HWND hWnd, const char *pszUtf8);
/// The user has chosen another layout.
void ForgetSdlLayout();
