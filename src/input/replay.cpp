#include "tarvix/replay.h"

#include "input/keyqueue.h"
#include "input/paste.h"
#include "input/replayhooks.h"
#include "input/replaytext.h"
#include "screens/screenhooks.h"
#include "tarvix/error.h"
#include "tarvix/file.h"
#include "tarvix/globals.h"
#include "tarvix/keyboard.h"
#include "tarvix/llist.h"
#include "tarvix/mouse.h"
#include "tarvix/screen.h"
#include "tarvix/timer.h"

#include <algorithm>
#include <stdio.h>
#include <string.h>

namespace
{
const char s_szMagic[] = "tarvix-replay";
const xulong s_ulStartTime = 100000; // milliseconds; the clock of every session begins here
const xulong s_ulLongestWait = 1000;

CReplay *s_pActive = nullptr;

xlong Refuse(const char *pszName, xlong lLine, const char *pszText)
{
    return glb->m_Error.SetErrorf("CReplay: %.500s, line %ld: %s", pszName, (long)lLine, pszText);
}

// The next line of a text that is cut up; null at its end.
char *NextLine(char **ppsz, char *pEnd)
{
    char *const psz = *ppsz;
    if (psz == pEnd)
        return nullptr;
    char *pszStop = (char *)memchr(psz, '\n', (size_t)(pEnd - psz));
    *ppsz = pszStop ? pszStop + 1 : pEnd;
    if (!pszStop)
        pszStop = pEnd;
    if (pszStop > psz && pszStop[-1] == '\r')
        --pszStop;
    // A zero would hide the rest of its line.
    for (char *p = psz; p < pszStop; ++p)
        if (!*p)
            *p = 1;
    *pszStop = 0;
    return psz;
}

const char *ParseEvent(CReplayLine &line, TReplayEvent *pEvent)
{
    int nKind = 0;
    while (nKind < REPLAY_KINDS && !line.TakeWord(s_ReplayWords[nKind].pszName))
        ++nKind;
    if (nKind == REPLAY_KINDS)
        return "There is no such event.";
    pEvent->eKind = (EReplayKind)nKind;
    const TReplayWord &word = s_ReplayWords[nKind];
    for (xlong l = 0; l < word.lCount; ++l)
        if (!line.TakeNumber(word.aRanges[l], &pEvent->alValues[l]))
            return "A number is missing or out of range.";
    if (nKind == REPLAY_PASTE && !(pEvent->pszText = line.TakeText()))
        return "The text is damaged.";
    return line.IsEmpty() ? nullptr : "Something follows the event.";
}
} // namespace

CReplay *ActiveReplay()
{
    return s_pActive;
}

bool IsInputReplayed()
{
    return s_pActive && s_pActive->IsPlaying();
}

void ReplayBeginFrame()
{
    if (s_pActive)
        s_pActive->BeginFrame();
}

void ReplayTakeInput()
{
    if (s_pActive)
        s_pActive->TakeInput();
}

void ReplayEndFrame()
{
    if (s_pActive)
        s_pActive->EndFrame();
}

CReplay::CReplay()
    : m_eMode(OFF), m_bRealTime(false), m_bPumped(false), m_bWriteFailed(false), m_bUnflushed(false),
      m_lStep(DEFAULT_STEP), m_lFrame(0), m_lLastFrame(0), m_lStamp(0), m_ulTime(0), m_ulPaceReal(0), m_ulPaceTime(0),
      m_lX(0), m_lY(0), m_bApplying(false), m_lRealActive(-1), m_lPointX(0), m_lPointY(0), m_alMode(), m_pText(nullptr),
      m_pEvents(nullptr), m_lEvents(0), m_lNext(0), m_pFile(nullptr)
{
}

CReplay::~CReplay()
{
    Stop();
}

void CReplay::FreeEvents()
{
    XDELETE_ARRAY(m_pEvents);
    XDELETE_ARRAY(m_pText);
    m_pEvents = nullptr;
    m_pText = nullptr;
    m_lEvents = m_lNext = 0;
}

xlong CReplay::Play(const char *pszFile, xlong bRealTime)
{
    CFile file;
    xulong ulSize = 0;
    if (!file.Open(pszFile, FILE_READ) || !file.GetSize(&ulSize))
        return 0;
    char *pText = ulSize < 0x7fffff00 ? XNEW(char[ulSize + 1]) : nullptr;
    if (!pText)
        return xError(XERR_MEMORY);
    const xlong lResult = (!ulSize || file.Read(pText, ulSize)) && PlayText(pText, ulSize, pszFile, bRealTime);
    XDELETE_ARRAY(pText);
    return lResult;
}

xlong CReplay::PlayText(const char *pText, xulong ulSize, const char *pszName, xlong bRealTime)
{
    if (s_pActive)
        return xErrorTxt("CReplay: A replay or recording runs already.");
    FreeEvents();
    xlong lLines = 1;
    for (xulong ul = 0; ul < ulSize; ++ul)
        lLines += pText[ul] == '\n';
    m_pText = ulSize < 0x7fffff00 ? XNEW(char[ulSize + 1]) : nullptr;
    m_pEvents = (xulong)lLines < 0x7fffff00 / sizeof(TReplayEvent) ? XNEW(TReplayEvent[(size_t)lLines]) : nullptr;
    if (!m_pText || !m_pEvents)
    {
        FreeEvents();
        return xError(XERR_MEMORY);
    }
    memcpy(m_pText, pText, ulSize);
    m_pText[ulSize] = 0;
    m_lEvents = (xlong)ulSize; // until it counts events
    if (!Parse(pszName))
    {
        FreeEvents();
        return 0;
    }
    m_bRealTime = bRealTime != 0;
    return Begin(PLAY);
}

xlong CReplay::Parse(const char *pszName)
{
    char *psz = m_pText, *const pEnd = m_pText + m_lEvents;
    m_lEvents = 0;
    m_lStep = m_lX = m_lY = 0;
    m_alMode[0] = 0;
    bool bMagic = false, bStart = false, bEnd = false;
    xlong lLine = 0, lFrame = 1, lVersion;
    while (char *pszLine = NextLine(&psz, pEnd))
    {
        ++lLine;
        CReplayLine line(pszLine);
        if (line.IsEmpty())
            continue;
        if (!bMagic)
        {
            if (!line.TakeWord(s_szMagic))
                return Refuse(pszName, lLine, "This is no recording.");
            if (!line.TakeNumber({ 1, 1 }, &lVersion) || !line.IsEmpty())
                return Refuse(pszName, lLine, "The recording is of another version.");
            bMagic = true;
            continue;
        }
        if (bEnd)
            return Refuse(pszName, lLine, "Something follows the end.");
        if (line.TakeWord("step"))
        {
            if (m_lStep || !line.TakeNumber({ 1, MAX_STEP }, &m_lStep) || !line.IsEmpty())
                return Refuse(pszName, lLine, "The step must be one number from 1 to 1000, given once.");
            continue;
        }
        if (line.TakeWord("start"))
        {
            const TReplayRange *pRanges = s_ReplayWords[REPLAY_POINT].aRanges;
            if (bStart || !line.TakeNumber(pRanges[0], &m_lX) || !line.TakeNumber(pRanges[1], &m_lY) || !line.IsEmpty())
                return Refuse(pszName, lLine, "The start must be a place, given once.");
            bStart = true;
            continue;
        }
        if (line.TakeWord("mode"))
        {
            const TReplayRange range = { 1, 0xffff };
            if (m_alMode[0] || !line.TakeNumber(range, &m_alMode[0]) || !line.TakeNumber(range, &m_alMode[1]) ||
                !line.TakeNumber(range, &m_alMode[2]) || !line.IsEmpty())
                return Refuse(pszName, lLine, "The mode must be width, height and depth, given once.");
            if (!CheckMode(pszName, lLine))
                return 0;
            continue;
        }
        TReplayEvent &event = m_pEvents[m_lEvents];
        event = {};
        if (!line.TakeNumber({ 1, 0x7ffffffe }, &event.lFrame))
            return Refuse(pszName, lLine, "A line must begin with its frame, from 1 on.");
        if (event.lFrame < lFrame)
            return Refuse(pszName, lLine, "Frames must not go back.");
        if (!m_lStep || !bStart)
            return Refuse(pszName, lLine, "Step and start must come before the first event.");
        if (const char *pszFault = ParseEvent(line, &event))
            return Refuse(pszName, lLine, pszFault);
        lFrame = event.lFrame;
        if (event.eKind == REPLAY_END)
        {
            m_lLastFrame = lFrame;
            bEnd = true;
        }
        else
            ++m_lEvents;
    }
    if (!bMagic)
        return Refuse(pszName, lLine + 1, "This is no recording.");
    return bEnd ? 1 : Refuse(pszName, lLine + 1, "The end is missing.");
}

bool CReplay::CheckMode(const char *pszName, xlong lLine)
{
    const SVmode *pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
    if (!pMode || (pMode->lWidth == m_alMode[0] && pMode->lHeight == m_alMode[1] && pMode->lDepth == m_alMode[2]))
        return true;
    char szText[160];
    snprintf(szText, sizeof(szText), "It was made at %ld*%ld*%ld, and the screen is at %ld*%ld*%ld.", (long)m_alMode[0],
             (long)m_alMode[1], (long)m_alMode[2], (long)pMode->lWidth, (long)pMode->lHeight, (long)pMode->lDepth);
    return Refuse(pszName, lLine, szText);
}

xlong CReplay::Record(const char *pszFile, xlong lStep)
{
    if (s_pActive)
        return xErrorTxt("CReplay: A replay or recording runs already.");
    if (!lStep)
        lStep =
            glb->m_lMinimumFrameTime > 0 ? std::min<xlong>(glb->m_lMinimumFrameTime, MAX_STEP) : (xlong)DEFAULT_STEP;
    if (lStep < 1 || lStep > MAX_STEP)
        return xErrorTxt("CReplay::Record: The step must be 1 to 1000 milliseconds.");
    m_pFile = XNEW(CFile);
    if (!m_pFile)
        return xError(XERR_MEMORY);
    if (!m_pFile->Open(pszFile, FILE_WRITE))
    {
        XDELETE(m_pFile);
        m_pFile = nullptr;
        return 0;
    }
    m_lStep = lStep;
    m_bWriteFailed = false;
    m_bRealTime = true;
    m_lX = glb->m_pMouse ? glb->m_pMouse->m_lX : 0;
    m_lY = glb->m_pMouse ? glb->m_pMouse->m_lY : 0;
    char szHead[200];
    int nLength = snprintf(szHead, sizeof(szHead), "%s 1\nstep %ld\nstart %ld %ld\n", s_szMagic, (long)m_lStep,
                           (long)m_lX, (long)m_lY);
    const SVmode *pMode = glb->m_pScreen ? glb->m_pScreen->GetActiveMode() : nullptr;
    if (pMode)
        nLength += snprintf(szHead + nLength, sizeof(szHead) - nLength, "mode %ld %ld %ld\n", (long)pMode->lWidth,
                            (long)pMode->lHeight, (long)pMode->lDepth);
    Write(szHead, (xulong)nLength);
    return Begin(RECORD);
}

xlong CReplay::Begin(EMode eMode)
{
    if (CMouseBase *pMouse = glb->m_pMouse)
    {
        pMouse->SetPos(m_lX, m_lY);
        pMouse->m_ulButtons = pMouse->m_ulPrevButtons = 0;
        pMouse->m_bLeftDown = pMouse->m_bRightDown = pMouse->m_bMiddleDown = 0;
    }
    if (glb->m_pKeyboard)
        glb->m_pKeyboard->Clear(CKeyboardBase::CLEAR_QUEUE | CKeyboardBase::CLEAR_STATES);
    m_lPointX = m_lX;
    m_lPointY = m_lY;
    m_eMode = eMode;
    m_lFrame = m_lNext = 0;
    m_lStamp = 0;
    m_lRealActive = -1;
    m_bPumped = true;
    m_ulTime = m_ulPaceTime = s_ulStartTime;
    m_ulPaceReal = RealTime();
    s_pActive = this;
    SetActivateHook([](xlong bActive) { return s_pActive->OnActive(bActive); });
    RestampTimers();
    return 1;
}

// The clock jumps when a replay begins or ends; nothing that waits may take
// that for time that has passed.
void CReplay::RestampTimers()
{
    glb->m_ulLastFrameTime = xGetTime();
    glb->m_fUpdateRemainder = 0;
    if (!glb->m_pActiveTimers)
        return;
    for (const CNode *pNode = glb->m_pActiveTimers->m_pFirst; pNode; pNode = pNode->pNext)
    {
        TTimerEntry *pEntry = (TTimerEntry *)pNode->pData;
        pEntry->ulLastTime = xGetTime();
        pEntry->fRemainder = 0;
    }
}

xlong CReplay::Stop()
{
    if (m_eMode == OFF)
        return 1;
    const bool bRecorded = m_eMode == RECORD;
    if (bRecorded)
    {
        m_bPumped = false;
        m_lFrame = std::max(std::max(m_lFrame, m_lStamp), (xlong)1);
        Line(s_ReplayWords[REPLAY_END].pszName, 0, nullptr);
        m_lLastFrame = m_lFrame;
    }
    m_eMode = OFF;
    s_pActive = nullptr;
    SetActivateHook(nullptr);
    if (glb)
        RestampTimers();
    if (m_lRealActive >= 0)
        ActivateScreen(m_lRealActive);
    // Not left to the destructor: the globals may be gone by then.
    FreeEvents();
    if (!bRecorded)
        return 1;
    if (!m_pFile->Flush())
        m_bWriteFailed = true;
    m_pFile->Close();
    XDELETE(m_pFile);
    m_pFile = nullptr;
    return m_bWriteFailed ? xErrorTxt("CReplay: The recording could not be written.") : 1;
}

xlong CReplay::IsPlaying() const
{
    return m_eMode == PLAY;
}

xlong CReplay::IsRecording() const
{
    return m_eMode == RECORD;
}

xlong CReplay::GetFrame() const
{
    return m_lFrame;
}

xlong CReplay::GetLastFrame() const
{
    return m_lLastFrame;
}

xulong CReplay::GetTime() const
{
    return m_ulTime;
}

void CReplay::Pace()
{
    if (!m_bRealTime)
        return;
    const xulong ulWanted = m_ulTime - m_ulPaceTime, ulPassed = RealTime() - m_ulPaceReal;
    if (ulPassed < ulWanted)
        RealSleep(std::min(ulWanted - ulPassed, s_ulLongestWait));
    else
    {
        // Too late: what was lost is not made up for.
        m_ulPaceTime = m_ulTime;
        m_ulPaceReal = RealTime();
    }
}

void CReplay::BeginFrame()
{
    ++m_lFrame;
    m_bPumped = false;
    m_ulTime += (xulong)m_lStep;
    Pace();
    // Timers come before the input, and they read the pointer.
    while (m_eMode == PLAY && m_lNext < m_lEvents && m_pEvents[m_lNext].lFrame <= m_lFrame &&
           m_pEvents[m_lNext].eKind == REPLAY_POINT)
        Apply(m_pEvents[m_lNext++]);
}

void CReplay::TakeInput()
{
    // A callback of an event may run frames of its own, which take what follows.
    while (m_eMode == PLAY && m_lNext < m_lEvents && m_pEvents[m_lNext].lFrame <= m_lFrame)
        Apply(m_pEvents[m_lNext++]);
    m_bPumped = true;
}

void CReplay::EndFrame()
{
    if (m_eMode == PLAY && m_lFrame >= m_lLastFrame)
        Stop();
    if (m_eMode == RECORD && m_bUnflushed)
    {
        m_bUnflushed = false;
        if (!m_pFile->Flush())
            m_bWriteFailed = true;
    }
}

void CReplay::Apply(const TReplayEvent &event)
{
    const xlong *plValues = event.alValues;
    CMouseBase *const pMouse = glb->m_pMouse;
    CKeyboardBase *const pKeyboard = glb->m_pKeyboard;
    switch (event.eKind)
    {
    case REPLAY_MOUSE:
        if (pMouse)
            pMouse->Feed(plValues[0], plValues[1], plValues[2], plValues[3], plValues[4]);
        break;
    case REPLAY_POINT:
        m_lPointX = plValues[0];
        m_lPointY = plValues[1];
        break;
    case REPLAY_KEY:
        if (pKeyboard)
            QueueKey(*pKeyboard, (unsigned short)plValues[0], plValues[1]);
        break;
    case REPLAY_STATE:
        if (pKeyboard)
            StoreKeyState(*pKeyboard, (unsigned short)plValues[0], plValues[1]);
        break;
    case REPLAY_PASTE:
    {
        // The clipboard's own text is a copy too, which the sink may write to.
        const size_t ulSize = strlen(event.pszText) + 1;
        if (char *pszCopy = XNEW(char[ulSize]))
        {
            memcpy(pszCopy, event.pszText, ulSize);
            SendPaste(pszCopy);
            XDELETE_ARRAY(pszCopy);
        }
        break;
    }
    case REPLAY_ACTIVE:
        ActivateScreen(plValues[0]);
        break;
    case REPLAY_CLOSE:
        xSetUserWantToQuit(1);
        break;
    default:
        break;
    }
}

void CReplay::ActivateScreen(xlong bActive)
{
    if (!glb || !glb->m_pScreen)
        return;
    m_bApplying = true;
    if (bActive)
        glb->m_pScreen->Activate();
    else
        glb->m_pScreen->DeActivate();
    m_bApplying = false;
}

void CReplay::Write(const char *pText, xulong ulSize)
{
    m_bUnflushed = true;
    if (!m_bWriteFailed && !m_pFile->Write(pText, ulSize))
        m_bWriteFailed = true;
}

void CReplay::Line(const char *pszKind, xlong lCount, const xlong *plValues)
{
    char szLine[128];
    m_lStamp = m_lFrame + m_bPumped;
    int nLength = snprintf(szLine, sizeof(szLine), "%ld %s", (long)m_lStamp, pszKind);
    for (xlong l = 0; l < lCount; ++l)
        nLength += snprintf(szLine + nLength, sizeof(szLine) - nLength, " %ld", (long)plValues[l]);
    szLine[nLength++] = '\n';
    Write(szLine, (xulong)nLength);
}

void CReplay::OnMouse(xlong lX, xlong lY, xlong lDX, xlong lDY, xlong lDown)
{
    const xlong alValues[] = { lX, lY, lDX, lDY, lDown };
    if (m_eMode == RECORD)
        Line(s_ReplayWords[REPLAY_MOUSE].pszName, 5, alValues);
}

void CReplay::OnPoint(xlong *plX, xlong *plY)
{
    if (m_eMode == PLAY)
    {
        *plX = m_lPointX;
        *plY = m_lPointY;
        return;
    }
    if (m_eMode != RECORD || (*plX == m_lPointX && *plY == m_lPointY))
        return;
    m_lPointX = *plX;
    m_lPointY = *plY;
    const xlong alValues[] = { m_lPointX, m_lPointY };
    Line(s_ReplayWords[REPLAY_POINT].pszName, 2, alValues);
}

void CReplay::OnKey(unsigned short usKey, xlong lFlags)
{
    const xlong alValues[] = { usKey, lFlags };
    if (m_eMode == RECORD)
        Line(s_ReplayWords[REPLAY_KEY].pszName, 2, alValues);
}

void CReplay::OnState(unsigned short usKey, unsigned char ucState)
{
    const xlong alValues[] = { usKey, ucState };
    if (m_eMode == RECORD)
        Line(s_ReplayWords[REPLAY_STATE].pszName, 2, alValues);
}

void CReplay::OnPaste(const char *pszText)
{
    if (m_eMode != RECORD)
        return;
    m_lStamp = m_lFrame + m_bPumped;
    char szPiece[128];
    xulong ulLength =
        (xulong)snprintf(szPiece, sizeof(szPiece), "%ld %s \"", (long)m_lStamp, s_ReplayWords[REPLAY_PASTE].pszName);
    for (; *pszText; ++pszText)
    {
        ulLength += QuoteReplayChar((unsigned char)*pszText, szPiece + ulLength);
        if (ulLength > sizeof(szPiece) - 8)
        {
            Write(szPiece, ulLength);
            ulLength = 0;
        }
    }
    szPiece[ulLength++] = '"';
    szPiece[ulLength++] = '\n';
    Write(szPiece, ulLength);
}

bool CReplay::OnActive(xlong bActive)
{
    if (m_eMode == RECORD)
        Line(s_ReplayWords[REPLAY_ACTIVE].pszName, 1, &bActive);
    if (m_eMode != PLAY || m_bApplying)
        return true;
    m_lRealActive = bActive;
    return false;
}

void CReplay::OnClose()
{
    if (m_eMode == RECORD)
        Line(s_ReplayWords[REPLAY_CLOSE].pszName, 0, nullptr);
}

// What is let go in another program is told by nobody: it would stay down in
// the session and in each of its replays.
void CReplay::OnFocusLost()
{
    if (m_eMode != RECORD)
        return;
    CMouseBase *const pMouse = glb->m_pMouse;
    if (pMouse && pMouse->m_ulButtons & XBTN_DOWN_MASK)
        pMouse->Feed(pMouse->m_lX, pMouse->m_lY, 0, 0, 0);
    CKeyboardBase *const pKeyboard = glb->m_pKeyboard;
    for (unsigned short us = 1; pKeyboard && us < CKeyboardBase::CODES; ++us)
    {
        if (!(pKeyboard->m_abKeys[us] & CKeyboardBase::IS_DOWN))
            continue;
        QueueKey(*pKeyboard, us, 0);
        OnKey(us, 0);
        StoreKeyState(*pKeyboard, us, pKeyboard->m_abKeys[us] & CKeyboardBase::WAS_PRESSED);
        OnState(us, pKeyboard->m_abKeys[us]);
    }
}

void CReplay::OnSleep(xulong ulTime)
{
    m_ulTime += ulTime;
    Pace();
}
