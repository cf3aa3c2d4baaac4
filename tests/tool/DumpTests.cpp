// filter --dump: pictures of both objects, and a run that does not notice them.

#include "ToolFixture.h"

namespace {

TEST_F(Tool, DumpsItsObjectsAndDoesTheSame)
{
    const string szFiles = "./d/input.bmp ./d/input_1201x1403.bmp ./d/input_1201x1403.raw ./d/output.bmp "
                           "./d/output_1201x1403.bmp ./d/output_1201x1403.raw ";
    for (const Layout& layout : {kLayouts[0], kLayouts[2]}) { // in memory and in files
        Picture in = RandomPicture(layout, 1201, 1403);
        const bool bBitmap = layout.nBytes == 1;
        Save("in", Encode(in));
        const string szJob = fmt::format("exec $IMGBAND filter in out --op box --from {} --size 1201x1403 "
                                         "--temp-dir tmp --budget 12M --scheme whole --verbose ",
                                         layout.pszName);
        ASSERT_EQ(0, Shell("(" + szJob + ") && mv out plain").nStatus);
        EXPECT_THAT(Shell(szJob + "--dump d").szErr, HasSubstr("leak check: nothing left"));
        EXPECT_TRUE(Load("plain") == Load("out") && Files() == szFiles + "./in ./out ./plain ") << Files();
        string szRaw;
        for (std::size_t i = 0, nLine = 3603; i < in.samples.size(); i += 3)
            for (const std::size_t k : {i + 2, i + 1, i})
                Put(szRaw, in.samples[bBitmap ? (1402 - k / nLine) * nLine + k % nLine : k], layout.nBytes);
        EXPECT_TRUE(szRaw == Load("d/input_1201x1403.raw"));
        for (unsigned& nSample : in.samples)
            nSample >>= bBitmap ? 0 : 8;
        in.layout = kLayouts[0];
        EXPECT_TRUE(Encode(in, bBitmap).substr(54) == Load("d/input_1201x1403.bmp").substr(54));
        const string szRefused = Shell("rm -r d out plain; " + szJob + "--dump in").szErr;
        EXPECT_EQ(szRefused.find("in: no dump"), szRefused.rfind("no dump") - 4)
            << "not told once: " << szRefused;
        EXPECT_EQ("./in ./out ", Files()) << "and the job is done";

        bool bSent = false;
        const Outcome ended = Watch("rm out; " + szJob + "--dump d", [&](pid_t nChild) {
            if (!bSent && std::filesystem::exists(At("d/input.bmp")))
                bSent = kill(nChild, SIGINT) == 0;
        });
        EXPECT_TRUE(ended.nStatus == 130 && szFiles.starts_with(Files().substr(0, Files().find("./in "))))
            << Files();
        EXPECT_EQ("", Shell("find . -name '.?*'; ls tmp; rm -r d").szOut) << "left by the interrupted run";
    }
}

} // namespace
