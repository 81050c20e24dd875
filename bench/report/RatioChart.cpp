#include "report/RatioChart.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace bench
{

namespace
{

constexpr double LABEL_WIDTH = 470.0;
constexpr double BAR_AREA = 420.0;
constexpr double MARGIN = 70.0; // to the right of the bars, for their numbers
constexpr double LINE_HEIGHT = 20.0;
constexpr double TOP = 46.0;
constexpr double LARGEST_RATIO = 3.0; // longer bars are cut off there

constexpr const char* COLOUR_MET = "#2a9d5c";
constexpr const char* COLOUR_MISSED = "#d9822b";
constexpr const char* COLOUR_WITHOUT_GOAL = "#8296aa";

double placeOf(double ratio)
{
    return LABEL_WIDTH + std::min(ratio, LARGEST_RATIO) / LARGEST_RATIO * BAR_AREA;
}

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        if (c == '<')
            result += "&lt;";
        else if (c == '&')
            result += "&amp;";
        else
            result += c;
    }
    return result;
}

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

class Picture
{
public:
    void addText(double x, double y, const char* anchor, const std::string& text)
    {
        m_body << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">"
               << escaped(text) << "</text>\n";
    }

    void addBar(double y, double ratio, const char* colour)
    {
        m_body << "<rect x=\"" << LABEL_WIDTH << "\" y=\"" << y << "\" width=\""
               << placeOf(ratio) - LABEL_WIDTH << "\" height=\"12\" fill=\"" << colour << "\"/>\n";
    }

    void addLine(double x, double top, double bottom, const char* style)
    {
        m_body << "<line x1=\"" << x << "\" x2=\"" << x << "\" y1=\"" << top << "\" y2=\"" << bottom
               << "\" " << style << "/>\n";
    }

    std::string finish(double height) const
    {
        std::ostringstream picture;
        picture << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\""
                << LABEL_WIDTH + BAR_AREA + MARGIN << "\" height=\"" << height
                << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
                << "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n"
                << m_body.str() << "</svg>\n";
        return picture.str();
    }

private:
    std::ostringstream m_body;
};

const char* colourOf(const RatioResult& ratio)
{
    if (!ratio.hasGoal())
        return COLOUR_WITHOUT_GOAL;
    return ratio.isMet() ? COLOUR_MET : COLOUR_MISSED;
}

void addRatio(Picture& picture, double y, const RatioResult& ratio)
{
    const bool isBinding = ratio.rival.kind == RIVAL_KIND::BINDING;
    const std::string against = isBinding ? "" : " : " + ratio.rival.name;
    picture.addText(LABEL_WIDTH - 8.0, y + 10.0, "end", ratio.name + against);
    picture.addBar(y, ratio.getRatio(), colourOf(ratio));
    if (ratio.hasGoal())
        picture.addLine(placeOf(ratio.rival.goal), y - 3, y + 15, "stroke=\"#000000\"");
    picture.addText(placeOf(ratio.getRatio()) + 5.0, y + 10.0, "start", number(ratio.getRatio()));
}

} // namespace

std::string makeRatioChart(const Results& results)
{
    Picture picture;
    picture.addText(
        8.0, 18.0, "start", "Time of the library : time of the other side. Short bars are good.");
    picture.addText(8.0, 34.0, "start", "Stroke: goal. Dotted line: both sides equally fast.");
    double y = TOP;
    std::string subject;
    for (const RatioResult& ratio : results.ratios)
    {
        if (ratio.subject != subject)
        {
            y += LINE_HEIGHT;
            picture.addText(8.0, y - 4.0, "start", ratio.subject);
        }
        subject = ratio.subject;
        addRatio(picture, y, ratio);
        y += LINE_HEIGHT;
    }
    picture.addLine(placeOf(1.0), TOP, y, "stroke=\"#555555\" stroke-dasharray=\"2 3\"");
    return picture.finish(y + LINE_HEIGHT);
}

} // namespace bench
