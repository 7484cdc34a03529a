#pragma once

#include <filesystem>

/// What a job can be made from.
enum class DocumentKind { kPdf, kPostScript, kTiff, kPng, kJpeg };

/// Tells the kind of a file by its first bytes, whatever its name. Throws HostError for a file
/// that is missing, no file, unreadable, empty or of another kind.
DocumentKind KindOfDocument(const std::filesystem::path& path);

/// Whether a file begins as such a document does; false for one that cannot be read.
bool IsArtwork(const std::filesystem::path& path);
