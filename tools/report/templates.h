/** \file
 * The files of the page: page.html with places to fill ("{{data}}"), page.css, and its scripts in a row.
 */
#ifndef TEMPLATES_H
#define TEMPLATES_H

#include <string_view>

extern const std::string_view pageHtml;
extern const std::string_view pageCss;
extern const std::string_view pageJs;

#endif
