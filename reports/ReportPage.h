#pragma once

#include <functional>
#include <string>

class PageCanvas;

// Size of a page in points.
struct PageSize {
    double width = 0;
    double height = 0;
    bool operator==(const PageSize&) const = default;
};

// Today's date stamp ("2019年01月15日"), asked each time a page is drawn.
using DateStamp = std::function<std::string()>;

// A page of a report document that draws itself.
class ReportPage {
public:
    virtual ~ReportPage() = default;
    // The media box: origin (0, 0) and this size, whatever box is asked for.
    virtual PageSize bounds() const = 0;
    virtual void draw(PageCanvas& canvas) const = 0;
};
