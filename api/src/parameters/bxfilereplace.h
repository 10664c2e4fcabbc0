/** \file
 * Replaces the content of a file so that an interrupted or failed write leaves the old content whole.
 */
#ifndef BXFILEREPLACE_H
#define BXFILEREPLACE_H

#include <string>

/** What became of a replacement. */
enum class bxReplaced {
    done,    /**< the file holds the new content */
    refused, /**< the file cannot be replaced by another one; nothing was changed */
    failed   /**< the new content could not be written (errno tells why); nothing was changed */
};

/**
 * Writes `content` to a new file beside the file `name`, gives it the old one's owner and permissions, and
 * renames it over `name`. Refused for anything but a plain, writable file of one name in a directory open for
 * new files (or a name that does not exist yet).
 */
bxReplaced bxReplaceFile(const std::string& name, const std::string& content);

#endif
