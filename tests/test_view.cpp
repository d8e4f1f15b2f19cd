// End-to-end tests of "orvasf view": refused inputs and usage errors answer as "convert" does, the
// page is written atomically, embeds exactly the .glb that "convert" writes and loads nothing from
// elsewhere. (The page's behaviour in a browser is checked in tests/view/view_page.mjs.)
#include "support/BvhReference.h"
#include "support/ToolRunner.h"

#include <nlohmann/json.hpp>

#include <regex>

namespace {

using namespace tool_support;

const std::string sSamplePair = Quoted(kSampleAsf) + " --motion " + Quoted(kSampleAmc);

// What a build without node_modules/three says when asked for a page.
const char* const kNoPlayer = "built without the motion player";

// The bytes of RFC 4648 base64 text; throws on a character outside the alphabet.
std::string DecodeBase64(const std::string& pText)
{
    static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string lBytes;
    uint32_t lBits = 0;
    int lBitCount = 0;
    for (const char lChar : pText)
    {
        if (lChar == '=') break;
        const size_t lValue = kAlphabet.find(lChar);
        if (lValue == std::string::npos) throw std::runtime_error(std::string("not base64: ") + lChar);
        lBits = (lBits << 6) | static_cast<uint32_t>(lValue);
        lBitCount += 6;
        if (lBitCount >= 8)
        {
            lBitCount -= 8;
            lBytes += static_cast<char>((lBits >> lBitCount) & 0xFF);
        }
    }
    return lBytes;
}

// The text of the element <script ... id="pId">TEXT</script> of pPage.
std::string ScriptText(const std::string& pPage, const std::string& pId)
{
    const std::string lOpen = "id=\"" + pId + "\">";
    const size_t lStart = pPage.find(lOpen);
    if (lStart == std::string::npos) return std::string();
    const size_t lEnd = pPage.find("</script>", lStart);
    return pPage.substr(lStart + lOpen.size(), lEnd - lStart - lOpen.size());
}

// pPage without the contents of its <script> elements: the markup the browser acts on.
std::string MarkupOutsideScripts(const std::string& pPage)
{
    std::string lMarkup;
    size_t lAt = 0;
    for (size_t lOpen = pPage.find("<script"); lOpen != std::string::npos; lOpen = pPage.find("<script", lAt))
    {
        const size_t lTagEnd = pPage.find('>', lOpen) + 1;
        lMarkup += pPage.substr(lAt, lTagEnd - lAt);
        lAt = pPage.find("</script>", lTagEnd);
    }
    return lMarkup + pPage.substr(lAt);
}

class ViewTest : public ToolTest
{
protected:
    // Writes the sample's page to pName; skips the test in a build without the player.
    std::string SamplePage(const std::string& pName)
    {
        const ToolRun lRun = Run("view " + sSamplePair + " -o " + Work(pName));
        if (lRun.mErr.find(kNoPlayer) != std::string::npos) return std::string();
        EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
        return ReadFile(WorkPath(pName));
    }
};

TEST_F(ViewTest, RefusedInputsAndUsageErrorsAnswerAsConvertDoes)
{
    // Refused files, read by both commands: the same messages (file and line) and exit status.
    WriteFile(WorkPath("bad.bvh"), Replace(bvhtest::kSmallBvh, "5 -2 7.5 30", "5 -2 7.5"));
    WriteFile(WorkPath("bad.asf"), ":version 1.10\n:name broken\n:units\n  length abc\n");
    WriteFile(WorkPath("bad.glb"), "glTF but not binary glTF");
    WriteFile(WorkPath("small.bvh"), bvhtest::kSmallBvh);
    const std::string lInputs[] = {
        Work("bad.bvh"),
        Work("bad.asf"),
        Work("bad.glb"),
        Work("missing.asf"),
        Quoted(kSampleAsf) + " --motion " + Work("missing.amc"),
        Work("small.bvh") + " --motion " + Quoted(kSampleAmc),
        Quoted(kSampleAsf) + " --animation walk",
        Work("small.txt"),
        Quoted(kSampleAsf) + " --fps 0",
    };
    const ToolRun lProbe = Run("view " + Quoted(kSampleAsf) + " -o " + Work("probe.html"));
    const bool lHasPlayer = lProbe.mErr.find(kNoPlayer) == std::string::npos;
    std::filesystem::remove(WorkPath("probe.html"));
    for (const std::string& lInput : lInputs)
    {
        const ToolRun lConvert = Run("convert " + lInput + " -o " + Work("out.glb"));
        const ToolRun lView = Run("view " + lInput + " -o " + Work("out.html"));
        ASSERT_NE(lConvert.mStatus, 0) << lInput;
        if (!lHasPlayer && lConvert.mStatus == 1) continue;
        EXPECT_EQ(lView.mStatus, lConvert.mStatus) << lInput << "\n" << lView.mErr;
        // Usage messages name their command; everything else is word for word the same.
        EXPECT_EQ(std::regex_replace(lView.mErr, std::regex("\\bview\\b"), "convert"), lConvert.mErr) << lInput;
    }
    EXPECT_EQ(WorkFolderEntries(), (std::vector<std::string>{"bad.asf", "bad.bvh", "bad.glb", "small.bvh"}));
}

TEST_F(ViewTest, OutputsOtherThanAnHtmlPageOrMissingFoldersAreRefused)
{
    const std::pair<std::string, int> lRuns[] = {
        {"view " + sSamplePair, 2},
        {"view " + sSamplePair + " -o " + Work("out.glb"), 2},
        {"view " + sSamplePair + " -o " + Work("out"), 2},
        {"view " + sSamplePair + " -o " + Work("missing/out.html"), 3},
    };
    for (const auto& [lCommand, lStatus] : lRuns)
    {
        const ToolRun lRun = Run(lCommand);
        if (lRun.mErr.find(kNoPlayer) != std::string::npos) continue;
        EXPECT_EQ(lRun.mStatus, lStatus) << lCommand << "\n" << lRun.mErr;
        EXPECT_FALSE(lRun.mErr.empty()) << lCommand;
    }
    EXPECT_NE(Run("view " + sSamplePair + " -o " + Work("out.glb")).mErr.find("view writes an .html page, not "),
              std::string::npos);
    EXPECT_EQ(WorkFolderEntries(), std::vector<std::string>{});
}

TEST_F(ViewTest, PageReplacesTheTargetInOneStepAndALaterFailureLeavesIt)
{
    // A second name for the old file: a page written in place would change it too.
    WriteFile(WorkPath("walker.html"), "old page");
    std::filesystem::create_hard_link(WorkPath("walker.html"), WorkPath("old.html"));
    if (SamplePage("walker.html").empty()) GTEST_SKIP() << "orvasf was built without the player";
    EXPECT_EQ(ReadFile(WorkPath("old.html")), "old page");
    const std::string lPage = ReadFile(WorkPath("walker.html"));
    EXPECT_EQ(lPage.rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_EQ(lPage.substr(lPage.size() - 8), "</html>\n");

    // A refused motion leaves the page as it was.
    WriteFile(WorkPath("bad.amc"), ":DEGREES\n1\nroot 0 0\n");
    EXPECT_EQ(Run("view " + Quoted(kSampleAsf) + " --motion " + Work("bad.amc") + " -o " + Work("walker.html")).mStatus, 1);
    EXPECT_EQ(ReadFile(WorkPath("walker.html")), lPage);
    EXPECT_EQ(WorkFolderEntries(), (std::vector<std::string>{"bad.amc", "old.html", "walker.html"}));
}

TEST_F(ViewTest, PageEmbedsTheGlbOfConvertAndTheMotionsFrames)
{
    const std::string lPage = SamplePage("walker.html");
    if (lPage.empty()) GTEST_SKIP() << "orvasf was built without the player";
    ASSERT_EQ(Run("convert " + sSamplePair + " -o " + Work("walker.glb")).mStatus, 0);
    EXPECT_EQ(DecodeBase64(ScriptText(lPage, "orv-glb")), ReadFile(WorkPath("walker.glb")));

    const nlohmann::json lSettings = nlohmann::json::parse(ScriptText(lPage, "orv-config"));
    EXPECT_EQ(lSettings.at("source"), "walker.asf");
    EXPECT_EQ(lSettings.at("frameCount"), 240);
    EXPECT_EQ(lSettings.at("framesPerSecond"), 120.0);
}

TEST_F(ViewTest, PageLoadsNothingFromElsewhere)
{
    // A file name that would end a <script> element if it were copied as it is.
    std::filesystem::copy_file(kSampleAsf, WorkPath("a<!--b<script>.asf"));
    const ToolRun lRun = Run("view " + Work("a<!--b<script>.asf") + " -o " + Work("odd.html"));
    if (lRun.mErr.find(kNoPlayer) != std::string::npos) GTEST_SKIP() << "orvasf was built without the player";
    ASSERT_EQ(lRun.mStatus, 0) << lRun.mErr;
    const std::string lPage = ReadFile(WorkPath("odd.html"));
    EXPECT_EQ(nlohmann::json::parse(ScriptText(lPage, "orv-config")).at("source"), "a<!--b<script>.asf");

    // Outside the inlined scripts: no attribute that fetches (src, href, srcset, url(...)).
    const std::string lMarkup = MarkupOutsideScripts(lPage);
    EXPECT_FALSE(std::regex_search(lMarkup, std::regex(R"(\b(src|href|srcset|action)\s*=|url\(|@import)",
                                                       std::regex::icase)))
        << lMarkup;
    // Every <script> element ends where it should: as many openings as closings, and no comment
    // opened inside one (which would change where the browser ends it).
    const auto lCount = [](const std::string& pIn, const std::string& pText) {
        size_t lFound = 0;
        for (size_t lAt = pIn.find(pText); lAt != std::string::npos; lAt = pIn.find(pText, lAt + 1)) ++lFound;
        return lFound;
    };
    EXPECT_EQ(lCount(lPage, "<script"), lCount(lPage, "</script>"));
    EXPECT_EQ(lCount(lPage, "<!--"), lCount(lMarkup, "<!--"));
    EXPECT_NE(lMarkup.find("<script type=\"text/plain\" data-module=\"three\">"), std::string::npos);
}

} // namespace
