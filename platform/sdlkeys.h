// From SDL's keys to virtual keys, scan codes and characters.
#pragma once

#include "platform/input.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

/// @return false for a key that Windows doesn't know
bool TranslateSdlKey(const SDL_KeyboardEvent &event, TKeyEvent *pKey);

/// Character of Windows' western code page, 0 for one that it lacks.
unsigned char ToCodePage1252(uint32_t ulChar);
