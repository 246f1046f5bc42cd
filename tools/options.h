// The command lines of the tools: options in any order among the other words,
// each said once in the tool's table.
#pragma once

#include <stdlib.h>

#include <functional>
#include <string>
#include <vector>

class COptions
{
public:
    void Switch(const char *pszName, bool &bValue)
    {
        m_Rows.push_back({ pszName, "", [&bValue](const std::string &) { return bValue = true; } });
    }
    /// @param pszValue  what it takes, for people: "a folder"
    void Text(const char *pszName, const char *pszValue, std::string &strValue)
    {
        Value(pszName, pszValue,
              [&strValue](const std::string &str)
              {
                  strValue = str;
                  return !str.empty();
              });
    }
    /// The same each time that it is given.
    void Texts(const char *pszName, const char *pszValue, std::vector<std::string> &values)
    {
        Value(pszName, pszValue,
              [&values](const std::string &str)
              {
                  values.push_back(str);
                  return !str.empty();
              });
    }
    template <class T>
    void Number(const char *pszName, long lLeast, long lMost, T &value)
    {
        Value(pszName, "a number from " + std::to_string(lLeast) + " to " + std::to_string(lMost),
              [=, &value](const std::string &str)
              {
                  char *pszEnd = nullptr;
                  const long l = strtol(str.c_str(), &pszEnd, 10);
                  value = (T)l;
                  return !str.empty() && !*pszEnd && l >= lLeast && l <= lMost;
              });
    }
    /// @param take  false when it can't be used
    void Value(const char *pszName, const std::string &strValue, std::function<bool(const std::string &)> take)
    {
        m_Rows.push_back({ pszName, strValue, std::move(take) });
    }

    /// Behind "--" all are words, and "-" is one.
    /// @return what is wrong with the command line, or an empty text
    std::string Read(const std::vector<std::string> &args, std::vector<std::string> &words) const
    {
        bool bOnlyWords = false;
        for (size_t ul = 0; ul < args.size(); ++ul)
        {
            const std::string &strName = args[ul];
            if (bOnlyWords || strName.size() < 2 || strName[0] != '-')
            {
                words.push_back(strName);
                continue;
            }
            bOnlyWords = strName == "--";
            if (bOnlyWords)
                continue;
            const TRow *pRow = nullptr;
            for (const TRow &row : m_Rows)
                if (strName == row.pszName)
                    pRow = &row;
            if (!pRow)
                return "there is no option " + strName;
            if (pRow->strValue.empty())
                pRow->take("");
            else if (ul + 1 == args.size() || !pRow->take(args[++ul]))
                return strName + " takes " + pRow->strValue;
        }
        return "";
    }

private:
    struct TRow
    {
        const char *pszName;
        std::string strValue; ///< empty for a switch
        std::function<bool(const std::string &)> take;
    };

    std::vector<TRow> m_Rows;
};
