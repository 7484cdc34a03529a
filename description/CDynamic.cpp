#include "description/CDynamic.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "description/DescriptionLoader.h"
#include "description/DescriptionNodes.h"
#include "host/GetZeColorValue.h"
#include "host/Numbers.h"
#include "host/Text.h"

namespace {

constexpr std::size_t kNameBytes = 256;          // every name that is given back
constexpr std::size_t kMostItemCharacters = 63;  // in the host's lists

AString ModelName(const PrintSettings& settings) {
    return AString(FieldText(settings.ModelName, sizeof settings.ModelName));
}

CapabilityItem MakeItem(const NamedItems& items, std::size_t position) {
    CapabilityItem item;
    item.ID = static_cast<int32_t>(items.Identifiers[position]);
    CopyText(item.DisplayName, sizeof item.DisplayName, items.DisplayNames[position],
             kMostItemCharacters);
    CopyText(item.InternalName, sizeof item.InternalName, items.InternalNames[position],
             kMostItemCharacters);
    return item;
}

ColorantInfo MakeColorant(const DescriptionLists& lists, const ColorModeColorants& colorants,
                          std::size_t position) {
    const std::size_t color = colorants.Colors[position];
    const AString& internalName = lists.Colors.InternalNames[color];
    ColorantInfo info;
    CopyText(info.InternalName, sizeof info.InternalName, internalName);
    CopyText(info.DisplayName, sizeof info.DisplayName, lists.Colors.DisplayNames[color]);
    info.IsSpot = colorants.SpotFlags[position];
    info.ColorDepth = colorants.ColorDepths[position];
    info.ColorValue = GetZeColorValue(internalName);
    return info;
}

}  // namespace

CDynamic::CDynamic() = default;
CDynamic::~CDynamic() = default;

int32_t CDynamic::LoadDescription(const char* modelName) {
    if (loaded_ != 0) return 1;
    if (modelName == nullptr) return 0;
    if (ReadDescription(modelName)) {
        loaded_ = 1;
    } else {
        ForgetDescription();
    }
    return loaded_;
}

bool CDynamic::ReadDescription(const char* modelName) {
    root_ = AXMLTreeNode();  // of what an earlier load left when memory ran out
    failedFile_ = ModelListPath();
    failedReason_ = 0;
    const std::optional<AString> fileName = FindModelDescriptionFile(modelName, &failedReason_);
    if (!fileName) return ShowFault("Cannot get XML ");
    failedFile_ = AFilePath().Append("OutputDrivers").Append(*fileName);
    if (document_.loadFromFileEn(failedFile_, 1) == 0) {
        failedReason_ = document_.SystemError();
        return ShowFault("Loading description file fails");
    }
    if (document_.getRootNode(root_) == 0) return ShowFault("Getting root node fails");
    DescriptionLists lists;
    if (!ReadDescriptionLists(*this, lists)) return false;
    modelName_ = modelName;
    lists_ = std::move(lists);
    return true;
}

/// Back to the state before a load: handles of a document that did not serve must not be used.
void CDynamic::ForgetDescription() {
    root_ = AXMLTreeNode();
    document_.loadXML("<RootElement/>", 1);
}

AEnXMLTree& CDynamic::GetDescriptionTree() {
    return document_;
}
AXMLTreeNode CDynamic::GetDescriptionRoot() {
    return root_;
}
int32_t CDynamic::GetMediaCount() {
    return lists_.MediaCount;
}
int32_t CDynamic::GetPrintModeCount() {
    return lists_.PrintModeCount;
}
int32_t CDynamic::GetResolutionCount() {
    return lists_.ResolutionCount;
}
int32_t CDynamic::GetColorModeCount() {
    return lists_.ColorModeCount;
}

int32_t CDynamic::GetMediaList(const char* modelName, CapabilityList* list, int32_t* defaultMedia) {
    if (list == nullptr || LoadDescription(modelName) == 0) return 0;
    list->reserve(list->size() + lists_.Media.Identifiers.size());
    for (std::size_t position = 0; position < lists_.Media.Identifiers.size(); ++position) {
        list->push_back(MakeItem(lists_.Media, position));
    }
    if (defaultMedia != nullptr) *defaultMedia = lists_.DefaultMedia;
    return 1;
}

int32_t CDynamic::GetPrintModeList(const char* modelName, const int32_t* mediaId,
                                   CapabilityList* list, int32_t* defaultPosition) {
    if (mediaId == nullptr || list == nullptr || LoadDescription(modelName) == 0) return 0;
    int32_t position = 0;
    int32_t& defaultAt = defaultPosition != nullptr ? *defaultPosition : position;
    defaultAt = 0;
    if (lists_.PrintModeCount == 0) return 1;
    AXMLTreeNode media;
    if (!FindAllowedMedia(*mediaId, media)) return 0;
    const std::optional<int32_t> defaultMode =
        AttributeNumber(document_, media, "DefaultPrintMode");
    VisitChildren(document_, media, [&](const AXMLTreeNode& child, int32_t at) {
        const std::optional<int32_t> mode = AttributeNumber(document_, child, "ID");
        if (!mode || *mode < 0 || *mode >= lists_.PrintModeCount) return true;
        if (mode == defaultMode) defaultAt = at;
        list->push_back(MakeItem(lists_.PrintModes, static_cast<std::size_t>(*mode)));
        return true;
    });
    return 1;
}

int32_t CDynamic::GetResolutionList(const char* modelName, const int32_t* mediaId,
                                    const int32_t* printModeId, ResolutionList* list) {
    if (mediaId == nullptr || printModeId == nullptr || list == nullptr) return 0;
    if (LoadDescription(modelName) == 0) return 0;
    AXMLTreeNode media;
    AXMLTreeNode printMode;
    if (!FindAllowedMedia(*mediaId, media)) return 0;
    if (FindChildByID(media, *printModeId, &printMode) == 0) return 0;
    const NamedItems& items = lists_.Resolutions;
    list->reserve(list->size() + items.Identifiers.size());
    for (std::size_t position = 0; position < items.Identifiers.size(); ++position) {
        ResolutionItem item;
        item.XResolution = lists_.XResolutions[position];
        item.YResolution = lists_.YResolutions[position];
        item.ID = static_cast<int32_t>(items.Identifiers[position]);
        CopyText(item.DisplayName, sizeof item.DisplayName, items.DisplayNames[position],
                 kMostItemCharacters);
        list->push_back(item);
    }
    return 1;
}

int32_t CDynamic::GetColorModeName(int32_t position, char* name) {
    if (!IsColorMode(position)) return 0;
    CopyColorModeName(position, name);
    return 1;
}

int32_t CDynamic::IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                     const PrintSettings* settings) {
    if (settings == nullptr || LoadDescription(ModelName(*settings).c_str()) == 0) return 0;
    AXMLTreeNode resolution;
    if (!IsColorMode(position) || !FindAllowedResolution(*settings, resolution)) return 0;
    bool isListed = false;
    VisitChildren(document_, resolution, [&](const AXMLTreeNode& child, int32_t) {
        isListed = AttributeNumber(document_, child, "ID") == position;
        return !isListed;
    });
    if (allowed != nullptr) *allowed = isListed ? 1 : 0;
    CopyColorModeName(position, name);
    return 1;
}

int32_t CDynamic::FindColorModeID(const char* name) {
    if (loaded_ == 0 || name == nullptr) return -1;
    const AStringArray& names = lists_.ColorModes.DisplayNames;
    const auto found = std::find_if(names.begin(), names.end(), [&](const AString& displayName) {
        return EqualsIgnoringCase(displayName, name);
    });
    if (found == names.end()) return -1;
    const auto position = static_cast<std::size_t>(found - names.begin());
    return static_cast<int32_t>(lists_.ColorModes.Identifiers[position]);
}

int32_t CDynamic::GetDefaultColorMode(char* name, const PrintSettings* settings) {
    if (settings == nullptr || LoadDescription(ModelName(*settings).c_str()) == 0) return 0;
    AXMLTreeNode resolution;
    if (!FindAllowedResolution(*settings, resolution)) return 0;
    const int32_t position =
        AttributeNumber(document_, resolution, "DefaultColorMode").value_or(-1);
    if (!IsColorMode(position)) return 0;
    CopyColorModeName(position, name);
    return position;
}

int32_t CDynamic::GetColorantList(int32_t position, ColorantInfoList* list) {
    if (list == nullptr || loaded_ == 0 || !IsColorMode(position)) return 0;
    const ColorModeColorants& colorants =
        *lists_.ColorModeRecords[static_cast<std::size_t>(position)];
    const int32_t room = list->Items == nullptr ? 0 : std::max(list->Capacity, 0);
    const std::size_t count = std::min(colorants.Colors.size(), static_cast<std::size_t>(room));
    for (std::size_t colorant = 0; colorant < count; ++colorant) {
        list->Items[colorant] = MakeColorant(lists_, colorants, colorant);
    }
    list->Count = static_cast<int32_t>(count);
    return 1;
}

int32_t CDynamic::GetBaseResourceNumber(const char* listName) {
    if (listName == nullptr) return -1;
    AXMLTreeNode bases;
    AXMLTreeNode base;
    if (document_.getChild("BaseResourceNumber", root_, bases) == 0) {
        ShowFault("Getting BASERESOURCENODE node fails");
        return -1;
    }
    if (document_.getChild(listName, bases, base) == 0) {
        ShowFault("Getting szNode node fails");
        return -1;
    }
    return LeadingDecimal(document_.getValue(base)).value_or(-1);
}

int32_t CDynamic::FindChildByID(const AXMLTreeNode& parent, int32_t identifier,
                                AXMLTreeNode* child) {
    const bool isOnlyChild = document_.getChildCount(parent) == 1;
    std::optional<AXMLTreeNode> found;
    VisitChildren(document_, parent, [&](const AXMLTreeNode& candidate, int32_t) {
        const bool matches =
            isOnlyChild || AttributeNumber(document_, candidate, "ID").value_or(-1) == identifier;
        if (matches) found = candidate;
        return !matches;
    });
    if (!found) return 0;
    if (child != nullptr) *child = *found;
    return 1;
}

bool CDynamic::LeadIdentifiersToPositions(int32_t colorMode) const {
    if (!IsColorMode(colorMode)) return true;
    const auto isFirst = [](const ADWordArray& identifiers, uint32_t position) {
        const auto found = std::find(identifiers.begin(), identifiers.end(), position);
        return found - identifiers.begin() == position;
    };
    const auto mode = static_cast<uint32_t>(colorMode);
    const ADWordArray& colors = lists_.ColorModeRecords[mode]->Colors;
    return isFirst(lists_.ColorModes.Identifiers, mode) &&
           std::all_of(colors.begin(), colors.end(),
                       [&](uint32_t color) { return isFirst(lists_.Colors.Identifiers, color); });
}

bool CDynamic::FindAllowedMedia(int32_t mediaId, AXMLTreeNode& media) {
    AXMLTreeNode combinations;
    return document_.getChild("Control_Definition", root_, combinations) != 0 &&
           FindChildByID(combinations, mediaId, &media) != 0;
}

bool CDynamic::FindAllowedResolution(const PrintSettings& settings, AXMLTreeNode& resolution) {
    AXMLTreeNode media;
    AXMLTreeNode printMode;
    return FindAllowedMedia(settings.MediaIndex, media) &&
           FindChildByID(media, settings.PrintModeIndex, &printMode) != 0 &&
           FindChildByID(printMode, settings.ResolutionIndex, &resolution) != 0;
}

bool CDynamic::IsColorMode(int32_t position) const {
    return position >= 0 && position < lists_.ColorModeCount;
}

void CDynamic::CopyColorModeName(int32_t position, char* name) const {
    if (name == nullptr) return;
    CopyText(name, kNameBytes, lists_.ColorModes.DisplayNames[static_cast<std::size_t>(position)]);
}
