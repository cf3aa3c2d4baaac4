#pragma once
// The looks of images: one colour and hatch an image on the whole page.

#include "page/Node.h"

#include <algorithm>
#include <fmt/format.h>

class Palette
{
public:
    /// Knows the images of all steps and of the budget over time, as they appear.
    explicit Palette(const Node& report)
    {
        for (const auto& [pszTimes, pszImages] :
             {std::pair{"steps", "images"}, std::pair{"budget_over_time", "charged"}})
            for (const Node& time : report[pszTimes].Items())
                for (const Node& image : time[pszImages].Items())
                    if (Find(image["image"].String()) == m_images.size())
                        m_images.push_back(image["image"].String());
    }

    const std::vector<std::string>& Images() const { return m_images; }

    std::size_t Find(const std::string& szImage) const
    {
        return static_cast<std::size_t>(std::find(m_images.begin(), m_images.end(), szImage) -
                                        m_images.begin());
    }

    /// Classes of the page's style. Their counts have no common divisor: 30 images look different.
    std::string Look(const std::string& szImage) const
    {
        return fmt::format("c{} h{}", Find(szImage) % 6, Find(szImage) % 5);
    }

private:
    std::vector<std::string> m_images;
};
