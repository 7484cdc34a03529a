#pragma once

#include <map>
#include <string_view>

#include "host/AFilePath.h"
#include "host/AXMLTree.h"

inline constexpr const char* kDitherListFile = "Ditherparams.xml";
inline constexpr const char* kScreeningListFile = "ScreeningParams.xml";

/// The parameter files of one kind, dither or screening, as one call finds them below the host's
/// `OutputDrivers` folder. It reads each file at most once; nothing is kept from call to call.
class HalftoneFiles {
  public:
    /// `listFileName` is one of the two above: the list of manufacturers, which is also the file
    /// for whoever is not in it.
    explicit HalftoneFiles(std::string_view listFileName);

    /// The parameter file of a manufacturer's model: its own, else the manufacturer's, else the
    /// list file, whatever stands there.
    AFilePath LocateHalftoneFile(std::string_view modelName, std::string_view manufacturer);

    /// The document of a parameter file: plain where the path holds the list file's name, in
    /// encoded form elsewhere. Null when it is a folder or does not load. It lives as long as
    /// this object.
    const AXMLTree* LoadParameterFile(const AFilePath& path);

  private:
    /// The manufacturer's file appended to `path`. A parameter file of its own comes before a map
    /// of its models, and sets `isParameterFile`.
    bool FindManufacturerFile(std::string_view manufacturer, AFilePath& path,
                              bool& isParameterFile);
    /// The model's file by the manufacturer's map, appended to `path`.
    bool FindModelFile(const AFilePath& mapFile, std::string_view modelName, AFilePath& path);
    bool HasPrinterHardware(const AFilePath& file);

    struct Document {
        AEnXMLTree Tree{"RootElement"};
        bool IsLoaded = false;
    };
    const Document& Load(const AFilePath& path);
    const AXMLTree* LoadPlain(const AFilePath& path);
    const AXMLTree* LoadEncoded(const AFilePath& path);

    AString listFileName_;
    AFilePath folder_;
    AFilePath listPath_;
    std::map<AString, Document> documents_;  ///< by full path
};
