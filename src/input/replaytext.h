#pragma once

#include "tarvix/types.h"

enum EReplayKind
{
    REPLAY_MOUSE,  ///< x, y, movement x, movement y, buttons
    REPLAY_POINT,  ///< x, y on the desktop
    REPLAY_KEY,    ///< character or code, flags
    REPLAY_STATE,  ///< code, state bits
    REPLAY_PASTE,  ///< a text
    REPLAY_ACTIVE, ///< 1 the program came to the front, 0 it left it
    REPLAY_CLOSE,
    REPLAY_END,
    REPLAY_KINDS
};

struct TReplayEvent
{
    xlong lFrame;
    EReplayKind eKind;
    xlong alValues[5];
    const char *pszText; ///< of a paste
};

struct TReplayRange
{
    xlong lLeast;
    xlong lMost;
};

struct TReplayWord
{
    const char *pszName;
    xlong lCount; ///< of its numbers
    TReplayRange aRanges[5];
};

/// Words of the event lines, by kind.
extern const TReplayWord s_ReplayWords[REPLAY_KINDS];

/// Walks the words of one line.
class CReplayLine
{
public:
    /// @param psz  ends in a zero, is written to where a text is quoted
    explicit CReplayLine(char *psz) : m_psz(psz) {}

    bool IsEmpty();
    /// @return false when another word or none follows; nothing is taken then
    bool TakeWord(const char *pszWord);
    bool TakeNumber(const TReplayRange &range, xlong *plValue);
    /// A text in quotes; it lies where its quoted form did.
    /// @return null when it is damaged or has a zero byte
    const char *TakeText();

private:
    void SkipBlanks();

    char *m_psz;
};

/// The quoted form of a character.
/// @param pszQuoted  receives up to 4 characters and no zero
/// @return how many
xulong QuoteReplayChar(unsigned char ucChar, char *pszQuoted);
