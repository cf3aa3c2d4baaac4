// The band now and then.

#include "page/Sections.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <vector>

namespace {

constexpr double kLongSide = 120;   // pixels of a drawing
constexpr double kMostAspect = 4;   // longer images are drawn shorter
constexpr double kMargin = 9;       // round the image, for the frame
constexpr double kThinnest = 3;     // pixels of a band or a frame that would not be seen
constexpr std::size_t kMoments = 6; // of each image

struct Picture
{
    double fWidth, fHeight; ///< pixels of the drawing
    double fScale;          ///< of a line
};

Picture Fit(const Node& image)
{
    const double fLines = std::max(1.0, image["height"].Number());
    const double fAspect = std::clamp(image["width"].Number() / fLines, 1 / kMostAspect, kMostAspect);
    const double fHeight = kLongSide / std::max(1.0, fAspect);
    return {fHeight * fAspect, fHeight, fHeight / fLines};
}

Markup Box(double x, double y, double fWidth, double fHeight, const char* pszClass)
{
    return Tag("rect", {{"x", Pixels(x)},
                        {"y", Pixels(y)},
                        {"width", Pixels(fWidth)},
                        {"height", Pixels(fHeight)},
                        {"class", pszClass}});
}

Markup DrawBand(const Node& image, const Node& band)
{
    const Picture picture = Fit(image);
    const double fTop = band["top"].Number(), fLines = band["bottom"].Number() - fTop + 1;
    const double fBand = std::clamp(fLines * picture.fScale, kThinnest, picture.fHeight);
    const double y = kMargin + std::clamp(fTop * picture.fScale, 0.0, picture.fHeight - fBand);
    Markup drawn = Box(kMargin, kMargin, picture.fWidth, picture.fHeight, "image");
    if (const double fFrame = band["frame"].Number(); fFrame > 0) {
        const double fRim = std::clamp(fFrame * picture.fScale, kThinnest, kMargin - 1);
        drawn += Box(kMargin - fRim, y - fRim, picture.fWidth + 2 * fRim, fBand + 2 * fRim, "frame");
    }
    drawn += Box(kMargin, y, picture.fWidth, fBand, "band");
    const double fWidth = picture.fWidth + 2 * kMargin, fHeight = picture.fHeight + 2 * kMargin;
    return Tag("svg",
               {{"width", Pixels(fWidth)},
                {"height", Pixels(fHeight)},
                {"viewBox", fmt::format("0 0 {} {}", Pixels(fWidth), Pixels(fHeight))},
                {"role", "img"}},
               Tag("title", fmt::format("Lines {} to {} of {}", band["top"].String(), band["bottom"].String(),
                                        image["height"].String())) +
                   drawn);
}

Markup Moment(const Node& image, const Node& band)
{
    Markup words;
    if (band["seconds"].IsKnown())
        words += Tag("strong", Seconds(band["seconds"]));
    words += Text("lines ") + Exact(band["top"]) + Text(" – ") + Exact(band["bottom"]);
    return Tag("figure", DrawBand(image, band) + Tag("figcaption", words));
}

Markup ImageMoments(const Node& step, const Node& image, const std::vector<Node>& bands)
{
    const std::size_t nShown = std::min(bands.size(), kMoments);
    Markup moments;
    for (std::size_t i = 0; i < nShown; ++i)
        moments += Moment(image, bands[nShown == 1 ? 0 : i * (bands.size() - 1) / (nShown - 1)]);
    Markup words = PixelSize(image) + Text(" pixels, ") + BandWords(image);
    if (image["frame"].Number() > 0)
        words += Text(", frame ") + Exact(image["frame"]) + Text(" pixels");
    return Tag("h3", Exact(step["step"]) + Text(": ") + Exact(image["image"]) + Text(" ") +
                         Tag("small", Exact(image["role"]))) +
           Tag("p", words) + Tag("div", {{"class", "moments"}}, moments);
}

Markup Key(const char* pszClass, const char* pszName)
{
    return Tag("li", Tag("svg", {{"class", "swatch"}, {"viewBox", "0 0 22 14"}, {"aria-hidden", "true"}},
                         Box(1, 1, 20, 12, pszClass)) +
                         Tag("span", pszName));
}

} // namespace

Markup BandDrawings(const Node& report)
{
    std::map<std::pair<std::size_t, std::size_t>, std::vector<Node>> groups;
    const Node bands = report["bands"], steps = report["steps"];
    for (std::size_t i = 0; i < bands.Count(); ++i)
        groups[{bands.Item(i)["step"].Index(), bands.Item(i)["image"].Index()}].push_back(bands.Item(i));
    Markup drawings;
    for (const auto& [place, moments] : groups) {
        const Node step = steps.Item(place.first), image = step["images"].Item(place.second);
        if (image.IsKnown())
            drawings += ImageMoments(step, image, moments);
    }
    if (drawings.sz.empty())
        return {};
    return Tag("ul", {{"class", "legend"}},
               Key("image", "image") + Key("band", "band") + Key("frame", "frame round it")) +
           drawings;
}
