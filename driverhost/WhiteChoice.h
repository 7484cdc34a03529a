#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "driverhost/DriverLibrary.h"
#include "driverhost/ModelRules.h"
#include "host/Records.h"

// The white treatment that an operator chooses for a job. It stands in an options file below the
// base folder, which the job's option block names, and travels with the job in its settings.

/// The name of a treatment that the model offers; "none" below 0.
std::string WhiteNameOf(int32_t type, const ModelOutputSettings& model);
/// All that it offers.
std::string WhiteOffers(const ModelOutputSettings& model);
/// The position among what the model offers of a treatment by name or number, a name first. Throws
/// HostError(kUsage).
int32_t WhitePositionOf(const std::string& treatment, const ModelOutputSettings& model);

/// The name of the options file that a block names, for people.
std::string OptionsFileName(const DriverOptionBlock& block);
/// Where new options files stand.
std::filesystem::path OptionsFolder();
/// The choice in the file that the block names (-1: none chosen); nothing where that file is not
/// there or cannot be read. Makes no file.
std::optional<int32_t> StoredWhite(const DriverOptionBlock& block);
/// Removes the file that the block names where new ones stand; those of other folders are left to
/// whoever put them there.
void RemoveOptionsFile(const DriverOptionBlock& block);

/// Makes a new options file, and the block that names it, with the treatment at a position of what
/// the model offers. Throws HostError, and leaves none, when it cannot be stored.
DriverOptionBlock StoreWhite(const DriverLibrary& library, PrintSettings& settings,
                             const ModelOutputSettings& model, int32_t position);
/// The same in the file that the block names, which is made when there is none.
void StoreWhiteIn(DriverOptionBlock& block, const DriverLibrary& library, PrintSettings& settings,
                  const ModelOutputSettings& model, int32_t position);
/// Throws what these throw.
[[noreturn]] void RefuseUnstored();

/// The white choice of a job that is being made: what is ordered, else that of the job in whose
/// place it comes.
class WhiteOrder {
  public:
    /// `treatment` is empty without an order. Throws HostError for one that the model does not
    /// offer.
    WhiteOrder(const std::string& treatment, const std::filesystem::path& job,
               const std::string& model, const PrintChoice& choice);
    /// An options file that was made for a job that is not: removed.
    ~WhiteOrder();
    WhiteOrder(const WhiteOrder&) = delete;
    WhiteOrder& operator=(const WhiteOrder&) = delete;

    const DriverOptionBlock& Block() const { return block_; }
    std::optional<int32_t> Type() const { return type_; }
    /// The job is there: what the earlier one named goes.
    void Keep();

  private:
    void TakeFrom(const std::filesystem::path& job, const std::string& model);

    DriverOptionBlock block_ = {};
    DriverOptionBlock earlier_ = {};
    std::optional<int32_t> type_;
    bool isMade_ = false;
};
