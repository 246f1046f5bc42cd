// KCBL scripts beside the same trees as JSON (RapidJSON) and XML (pugixml).

#include "paired.h"

#include "tarvix/globals.h"
#include "tarvix/kcbl.h"

#include <pugixml.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string.h>

#include <random>
#include <vector>

namespace
{
// Windows of twenty controls each, as dialogs have them.
std::string MakeScript(int nWindows)
{
    const char *const apszTypes[] = { "Button", "Static", "Checkbox", "Edit", "Slider" };
    std::string strText = "; script\n";
    std::minstd_rand random(5);
    const auto number = [&] { return std::to_string(random() % 800); };
    for (int nWindow = 0; nWindow < nWindows; ++nWindow)
    {
        const std::string strWindow = std::to_string(nWindow);
        strText += "{ = Window, IDW_WINDOW" + strWindow + "\n    Create = \"The window " + strWindow + "\", " +
                   number() + ", " + number() + ", 640, 480, XWIN_TITLEBAR|XWIN_CLOSE|XWIN_FRAME\n";
        for (int n = 0; n < 20; ++n)
        {
            const std::string strName = strWindow + "_" + std::to_string(n);
            strText += std::string("    { = ") + apszTypes[n % 5] + ", IDC_CONTROL" + strName +
                       "\n        Create = \"Control number " + strName + "\", " + number() + ", " + number() +
                       ", 100, 24, XKEY_ENTER, CNTRL_HASBITMAP|CNTRL_ALPHA\n";
            if (n % 2)
                strText += "        Font = small\n        TextColor = white\n";
            if (n % 4 == 1)
                strText += "        Bitmap = btn_up, btn_down, btn_over, btn_off\n";
            strText += "    }\n";
        }
        strText += "}\n";
    }
    return strText;
}

bool IsHead(const TKCBLKeyword *pItem)
{
    return pItem->pChunk != nullptr;
}

template <class TWork>
void ForItems(const TKCBLChunk &chunk, TWork work)
{
    for (const CNode *pNode = chunk.m_pFirst->pNext; pNode; pNode = pNode->pNext)
        work((const TKCBLKeyword *)pNode->pData);
}

// An item is an array of its keyword and strings, and a chunk's last element is the array of its items.
void ToJson(const TKCBLChunk &chunk, rapidjson::Writer<rapidjson::StringBuffer> &writer)
{
    writer.StartArray();
    ForItems(chunk,
             [&](const TKCBLKeyword *pItem)
             {
                 writer.StartArray();
                 writer.String(pItem->pszKeyword);
                 for (xlong l = 0; l < pItem->lNumStrings; ++l)
                     writer.String(pItem->ppszStrings[l]);
                 if (IsHead(pItem))
                     ToJson(*pItem->pChunk, writer);
                 writer.EndArray();
             });
    writer.EndArray();
}

// An item is an element with its strings as attributes.
void ToXml(const TKCBLChunk &chunk, pugi::xml_node parent)
{
    ForItems(chunk,
             [&](const TKCBLKeyword *pItem)
             {
                 if (*pItem->pszKeyword == ';')
                     return;
                 pugi::xml_node node = parent.append_child(IsHead(pItem) ? "chunk" : pItem->pszKeyword);
                 for (xlong l = 0; l < pItem->lNumStrings; ++l)
                     node.append_attribute(("s" + std::to_string(l)).c_str()) = pItem->ppszStrings[l];
                 if (IsHead(pItem))
                     ToXml(*pItem->pChunk, node);
             });
}

struct TStringWriter : pugi::xml_writer
{
    void write(const void *pData, size_t ulSize) override { strText.append((const char *)pData, ulSize); }

    std::string strText;
};

void Fail(const char *pszWhat)
{
    fprintf(stderr, "bench_kcbl: %s failed: %s\n", pszWhat, glb->m_Error.GetError(nullptr));
    exit(1);
}

void CompareTexts(paired::CTable &table, const std::string &strSize, const std::string &strText, int nControls)
{
    CKCBL kcbl;
    if (!kcbl.Import(strText.c_str(), 0))
        Fail("Import");
    rapidjson::StringBuffer jsonText;
    rapidjson::Writer<rapidjson::StringBuffer> jsonWriter(jsonText);
    ToJson(kcbl.m_MainChunk, jsonWriter);
    pugi::xml_document xmlMade;
    ToXml(kcbl.m_MainChunk, xmlMade.append_child("script"));
    TStringWriter xmlText;
    xmlMade.save(xmlText, "", pugi::format_raw);

    const auto import = [&]
    {
        CKCBL read;
        if (!read.Import(strText.c_str(), 0))
            Fail("Import");
    };
    const auto parseJson = [&]
    {
        rapidjson::Document json;
        json.Parse(jsonText.GetString());
        paired::Keep(&json);
    };
    const auto parseXml = [&]
    {
        pugi::xml_document xml;
        xml.load_buffer(xmlText.strText.data(), xmlText.strText.size(), pugi::parse_default);
        paired::Keep(&xml);
    };
    const paired::TTimes besideJson = paired::Measure(import, parseJson), besideXml = paired::Measure(import, parseXml);
    table.Row("Import and Free", strSize, besideJson, "RapidJSON", 1);
    table.Row("Import and Free", strSize, besideXml, "pugixml", 1);
    printf("    %.0f ns a control, %.0f MB/s\n", besideJson.dOurs / nControls,
           (double)strText.size() * 1e3 / besideJson.dOurs);

    xlong lLen = 0;
    kcbl.ExportSize(&lLen);
    std::vector<char> buffer((size_t)lLen);
    const auto exportText = [&]
    {
        if (!kcbl.Export(buffer.data(), lLen, nullptr, 0))
            Fail("Export");
    };
    rapidjson::Document json;
    json.Parse(jsonText.GetString());
    rapidjson::StringBuffer jsonOut;
    const auto writeJson = [&]
    {
        jsonOut.Clear();
        rapidjson::Writer<rapidjson::StringBuffer> writer(jsonOut);
        json.Accept(writer);
    };
    TStringWriter xmlOut;
    const auto writeXml = [&]
    {
        xmlOut.strText.clear();
        xmlMade.save(xmlOut, "", pugi::format_raw);
    };
    table.Row("Export", strSize, paired::Measure(exportText, writeJson), "RapidJSON", 1);
    table.Row("Export", strSize, paired::Measure(exportText, writeXml), "pugixml", 1);
}

// Nanoseconds to find each of the items once, in their order.
struct TFindAll
{
    explicit TFindAll(int nItems)
    {
        for (int n = 0; n < nItems; ++n)
            names.push_back("Keyword" + std::to_string(n));
        for (const std::string &strName : names)
            kcbl.NewItem(strName.c_str(), KLONG, (xlong)1, KEND);
        kcbl.FirstItem();
    }
    TFindAll(const TFindAll &) = delete;

    void operator()()
    {
        for (const std::string &strName : names)
            if (!kcbl.FindItem(strName.c_str(), nullptr, nullptr, nullptr))
                Fail("FindItem");
    }

    CKCBL kcbl;
    std::vector<std::string> names;
};

void CompareFinds(paired::CTable &table)
{
    TFindAll few(100), many(10000);
    paired::TTimes times = paired::Measure([&] { many(); }, [&] { few(); });
    times.dOurs /= 10000;
    times.dPeer /= 100;
    // The longer list leaves the caches near the processor, hence not quite 1.
    table.Row("FindItem in script order", "10,000", times, "list of 100", 0.3);
}
} // namespace

int main()
{
    glb = new SGlobals;
    sglb = new SSysGlobals;
    // Below a block in use, so that neither heap asks the system for pages in
    // each round: the runtime's keeps what was freed in this program anyhow.
    void *pBig = xSysAllocMem(256 << 20);
    xSysAllocMem(16);
    xSysFreeMem(pBig);
    paired::CTable table("KCBL");
    const std::string strSmall = MakeScript(200), strPart = MakeScript(1000);
    std::string strLarge;
    int nControls = 0;
    for (; strLarge.size() < 5000000; nControls += 20000)
        strLarge += strPart;
    CompareTexts(table, "4,000", strSmall, 4000);
    CompareTexts(table, std::to_string(strLarge.size() / 1000000) + " MB", strLarge, nControls);
    CompareFinds(table);
    printf("\n%d goals missed\n", table.Missed());
    return 0;
}
