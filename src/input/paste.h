#pragma once

/// Where pasted text goes. Whoever takes it may write to it until the call ends.
/// @param pfnPaste  null takes it out
void SetPasteSink(void (*pfnPaste)(char *pszText));
void SendPaste(char *pszText);
