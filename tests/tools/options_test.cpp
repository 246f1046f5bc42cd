#include "tools/options.h"

#include <gtest/gtest.h>

TEST(COptions, ReadsSwitchesValuesAndWords)
{
    const struct
    {
        std::vector<std::string> args;
        std::string strFault, strSeen; ///< switch, text, texts, number, then the words
    } cases[] = {
        { {}, "", "0||7" },
        { { "a", "-s", "b", "--text", "t", "--many", "1", "--many", "2", "c" }, "", "1|t|1,2,7|a|b|c" },
        { { "-", "-s" }, "", "1||7|-" },
        { { "--", "-s", "--", "-" }, "", "0||7|-s|--|-" },
        { { "--text", "--" }, "", "0|--|7" },
        { { "--number", "-2" }, "", "0||-2" },
        { { "--number", "9" }, "", "0||9" },
        { { "--number", "-3" }, "--number takes a number from -2 to 9", "" },
        { { "--number", "10" }, "--number takes a number from -2 to 9", "" },
        { { "--number", "1x" }, "--number takes a number from -2 to 9", "" },
        { { "--number", "" }, "--number takes a number from -2 to 9", "" },
        { { "--text", "" }, "--text takes a folder", "" },
        { { "a", "--text" }, "--text takes a folder", "" },
        { { "-t" }, "there is no option -t", "" },
        { { "--texts" }, "there is no option --texts", "" },
    };
    for (const auto &c : cases)
    {
        COptions options;
        bool bSwitch = false;
        std::string strText;
        std::vector<std::string> texts, words;
        int nNumber = 7;
        options.Switch("-s", bSwitch);
        options.Text("--text", "a folder", strText);
        options.Texts("--many", "a name", texts);
        options.Number("--number", -2, 9, nNumber);
        EXPECT_EQ(c.strFault, options.Read(c.args, words));
        std::string strSeen = std::to_string(bSwitch) + "|" + strText + "|";
        for (const std::string &str : texts)
            strSeen += str + ",";
        strSeen += std::to_string(nNumber);
        for (const std::string &str : words)
            strSeen += "|" + str;
        if (c.strFault.empty())
            EXPECT_EQ(c.strSeen, strSeen);
    }
}
