#pragma once

#include <cstdint>

#include "description/CDynamic.h"
#include "description/ModelOutputSettings.h"
#include "host/AString.h"
#include "host/Arrays.h"

/// The base name of a job's files, from the host's source name: no drive or document prefix, no
/// bracketed parts, no extension, no blanks. "Job" where that leaves nothing to name a file by.
AString MakeJobName(const AString& sourceName);

/// An output name pattern with its first "filename" replaced by the job name.
AString SubstituteJobName(const AString& pattern, const AString& jobName);

/// File names of a page's channels.
class ChannelNaming {
  public:
    ChannelNaming() = default;
    /// `patterns` belong to channels 0, 1, … of a colour mode with `channelCount` colorants; they
    /// can be fewer.
    ChannelNaming(AStringArray patterns, int32_t channelCount, AString jobName);
    /// The page has a white file, of this pattern. An empty one names it after the job: every
    /// unnamed channel of several is numbered then.
    void AddWhite(AString pattern);

    /// `name` is a pattern that stands in for the channel's own when it is not empty. A channel
    /// without any pattern is named after the job; of several such channels all but the lowest
    /// get their 1-based number behind it, so that none replaces another. Channel -1 is the job
    /// name itself.
    AString FileName(int32_t channel, const AString& name = {}) const;

    bool HasWhite() const { return hasWhite_; }
    /// Of the page's white file: its pattern's name, or without one the job's, numbered where the
    /// only channel carries it.
    AString WhiteFileName() const;

  private:
    const AString& Pattern(int32_t channel) const;

    AStringArray patterns_;
    int32_t channelCount_ = 0;
    AString jobName_;
    bool hasWhite_ = false;
    AString whitePattern_;
};

/// The file names of a page's channels and, for a model whose effective treatment prints white, of
/// its white file. The description holds two names for white when two colours are called so:
/// treatments that print one value go by the last, the others by the first, and by none where the
/// colour mode names no channel at all. `description` is the one that `model` was read from.
ChannelNaming PageNaming(CDynamic& description, const char* modelName,
                         const ModelOutputSettings& model, int32_t channelCount,
                         const AString& jobName);
