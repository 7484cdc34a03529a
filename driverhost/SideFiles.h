#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "description/ModelOutputSettings.h"
#include "driverhost/Container.h"

struct HeaderFacts;
struct TicketFacts;

enum class SideKind { kHeader, kTicket, kPreview, kThumbnail };

/// A file that a job promises beside its channels, and what it is when it is whole.
struct SideFile {
    explicit SideFile(SideKind kind) : Kind(kind) {}

    SideKind Kind;
    std::string Path;          ///< relative to the job's folder; a name that leads out of it is ""
    std::uintmax_t Bytes = 0;  ///< of a header or thumbnail; 0: any
    bool IsCut = false;        ///< a header whose template gives more than a header holds
    std::string Template;      ///< of a ticket; "" when it cannot be read
    std::string Filled;        ///< the ticket itself
    int32_t Width = 0;         ///< of a preview, in pixels
    int32_t Height = 0;
};

/// The header of a page; nothing for a model without one, and for a template that gives no bytes.
std::optional<SideFile> PromiseHeader(const ModelOutputSettings& model, const HeaderFacts& facts);

/// The ticket of a page; nothing for a model without one.
std::optional<SideFile> PromiseTicket(const ModelOutputSettings& model, const TicketFacts& facts);

/// The preview of a page at so many whole dots per inch; nothing where the model's sizes or the
/// page rule it out.
std::optional<SideFile> PromisePreview(const ModelOutputSettings& model, const ContainerPage& page,
                                       int32_t xResolution, int32_t yResolution);

/// What is wrong with the file, as a sentence; "" when it is whole. `jobFolder` is relative to the
/// output folder `folder`.
std::string FaultOf(const std::filesystem::path& folder, const std::string& jobFolder,
                    const SideFile& file);
