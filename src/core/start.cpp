#include "tarvix/start.h"

#include "tarvix/globals.h"

#include <string.h>

void SetMinimumFrameTime(xlong lTime)
{
    glb->m_lMinimumFrameTime = lTime;
}

void SetUpdateTime(xlong lTime)
{
    glb->m_lUpdateTime = lTime;
}

void xSetXHandlerWaitMode(xlong lMode)
{
    glb->m_lXHandlerWaitMode = lMode;
}

void xSetXHandlerMaxWaitTime(xlong lTime)
{
    if (lTime < 0)
        lTime = 20;
    if (!glb->m_bXHandlerMaxWaitSet || lTime < glb->m_lXHandlerMaxWait)
        glb->m_lXHandlerMaxWait = lTime;
    glb->m_bXHandlerMaxWaitSet = 1;
}

void SetLoadDataCallback(void (*pfnLoadData)())
{
    if (glb)
        glb->m_pfnLoadData = pfnLoadData;
}

void DefaultLoadDataCallback()
{
    static xulong s_ulStamp = 0;
    const xulong ulNow = xGetTime();
    if (!s_ulStamp || xTimeDiff(s_ulStamp, ulNow) > 100)
        s_ulStamp = ulNow;
}

void SetWaitTimeOrSocketsCallback(void (*pfnWait)(xulong))
{
    if (glb)
        glb->m_pfnWaitTimeOrSockets = pfnWait;
}

void DefaultWaitTimeOrSocketsCallback(xulong ulTime)
{
    xSleep(ulTime);
}

xlong xDoUserWantToQuit()
{
    return glb ? glb->m_bUserWantToQuit : 0;
}

void xSetUserWantToQuit(unsigned char bQuit)
{
    if (glb)
        glb->m_bUserWantToQuit = bQuit;
}

char *GetApplicationName()
{
    static char s_szNoname[] = "Noname";
    return glb ? glb->m_szApplicationName : s_szNoname;
}

void SetApplicationName(const char *pszName)
{
    if (glb && pszName && strlen(pszName) < sizeof(glb->m_szApplicationName))
        strcpy(glb->m_szApplicationName, pszName);
}

xulong xTimeDiff(xulong ulA, xulong ulB)
{
    return ulB >= ulA ? ulB - ulA : ulB - ulA - 1;
}
