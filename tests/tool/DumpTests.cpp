// filter --dump: pictures of both objects, and a run that does not notice them.

#include "ToolFixture.h"

namespace {

TEST_F(Tool, DumpsItsObjectsAndDoesTheSame)
{
    const Names dumps = {"input.bmp",  "input_1201x1403.bmp",  "input_1201x1403.raw",
                         "output.bmp", "output_1201x1403.bmp", "output_1201x1403.raw"};
    for (const Layout& layout : {kLayouts[0], kLayouts[2]}) { // in memory and in files
        Picture in = RandomPicture(layout, 1201, 1403);
        const bool bBitmap = layout.nBytes == 1;
        Save("in", Encode(in));
        const string szJob = fmt::format("filter in out --op box --from {} --size 1201x1403 "
                                         "--temp-dir tmp --budget 12M --scheme whole --verbose ",
                                         layout.pszName);
        ASSERT_EQ(0, Run(szJob).nStatus);
        const string szPlain = Load("out");
        EXPECT_THAT(Run(szJob + "--dump d").szErr, HasSubstr("leak check: nothing left"));
        EXPECT_TRUE(SameBytes(szPlain, Load("out")));
        EXPECT_EQ(dumps, Files("d"));
        EXPECT_EQ(dumps.size() + 2, Files().size()) << "more than the pictures and their dumps";
        string szRaw;
        for (std::size_t i = 0, nLine = 3603; i < in.samples.size(); i += 3)
            for (const std::size_t k : {i + 2, i + 1, i})
                Put(szRaw, in.samples[bBitmap ? (1402 - k / nLine) * nLine + k % nLine : k], layout.nBytes);
        EXPECT_TRUE(SameBytes(szRaw, Load("d/input_1201x1403.raw")));
        for (unsigned& nSample : in.samples)
            nSample >>= bBitmap ? 0 : 8;
        in.layout = kLayouts[0];
        EXPECT_TRUE(SameBytes(Encode(in, bBitmap).substr(54), Load("d/input_1201x1403.bmp").substr(54)));
        Remove("d");
        Remove("out");
        const string szRefused = Run(szJob + "--dump in").szErr;
        EXPECT_EQ(szRefused.find("in: no dump"), szRefused.rfind("no dump") - 4)
            << "not told once: " << szRefused;
        EXPECT_EQ((Names{"in", "out"}), Files()) << "the job is not done";

        Remove("out");
        const Look fnInterrupt = Signal(SIGINT, [this] { return Exists("d/input.bmp"); });
        EXPECT_EQ(130, Run(szJob + "--dump d", fnInterrupt).nStatus);
        EXPECT_THAT(dumps, testing::IsSupersetOf(Files("d"))) << "half a dump is left";
        Remove("d");
        EXPECT_EQ(Names{"in"}, Files()) << "left by the interrupted run";
    }
}

} // namespace
