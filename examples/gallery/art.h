// Pictures of the gallery: painted by the program, so that none is stored.
#pragma once

/// Writes all pictures that the script names into a folder that exists, as BMP files.
/// @return false with the library's error stored
bool PaintArt(const char *pszFolder);
