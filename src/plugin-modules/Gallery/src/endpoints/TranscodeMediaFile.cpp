#include "plugin-modules/Gallery/src/endpoints/TranscodeMediaFile.h"

#include <stdexcept>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/text/Base64.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/endpoints/PictureSize.h"

namespace {

// A failure is in the text and the extra value, not in the code: the pages take any other code to mean that
// the request was refused.
KXP::RetVal Answer(int32_t value, Transcoder::Output& output, const char* failure) {
    if (value >= 0) return {};
    output.newFile.clear();
    return {KXP::Code::kOk, failure, value};
}

std::string ReadMeme(const std::string& code) {
    std::string meme = KXP::DecodeBase64Loosely(code);
    KXP_LOG(KXP::LogDetail, "Meme BMP Decrypted");
    return meme;
}

const char* Word(bool value) {
    return value ? "true" : "false";
}

}  // namespace

void TranscodeMediaFile::Parse(const KXP::Value& params) {
    file_ = KXP::jsonGetValueOrDefault<std::string>(params, "file", "");
    if (file_.empty() || !KXP::FileExists(file_))
        throw std::invalid_argument("File path is empty or file does not exist");
    targetPath_ = KXP::jsonGetValueOrDefault<std::string>(params, "targetPath", "");
    if (targetPath_.empty() || !KXP::DirectoryExists(targetPath_))
        throw std::invalid_argument("targetPath is empty");
    userData_ = KXP::jsonGetValueOrDefault<std::string>(params, "userData", "");
    maxFileSizeMB_ = KXP::jsonGetValueOrDefault<int>(params, "maxFileSizeMB", 0);
    quality_ = KXP::jsonGetEnumOrDefault(params, "quality", kTranscodeQualityJsonStrs, quality_);
    newDuration_ = KXP::jsonGetValue<double>(params, "newDuration");
    output_.newWidth = ReadSide(params, "newWidth", "width");
    output_.newHeight = ReadSide(params, "newHeight", "height");
    KXP_LOG(KXP::LogFailure, "HasWidth: %s, HasHeight: %s", Word(output_.newWidth > 0),
            Word(output_.newHeight > 0));
    fps_ = KXP::jsonGetEnumOrDefault(params, "newFps", kTranscodeFpsJsonStrs, fps_);
    memeImage_ = KXP::jsonGetValueOrDefault<std::string>(params, "memeImage", "");
    if (!memeImage_.empty()) return;
    if (maxFileSizeMB_ != 0 && (output_.newWidth != 0 || output_.newHeight != 0))
        throw std::invalid_argument(
            "\"maxFileSizeMB\" cannot be set together with \"newWidth\" or \"newHeight\"");
}

KXP::RetVal TranscodeMediaFile::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        Parse(params);
        const size_t dot = file_.rfind('.');
        const std::string extension = dot == std::string::npos ? "" : KXP::ToLower(file_.substr(dot));
        const std::shared_ptr<const Transcoder> transcoder = api().GetTranscoder();
        if (extension == ".mp4") return TranscodeVideo(*transcoder);
        if (extension == ".png" || extension == ".jpg" || extension == ".jps")
            return TranscodeImage(*transcoder);
        return {};
    });
}

KXP::RetVal TranscodeMediaFile::TranscodeVideo(const Transcoder& transcoder) {
    if (memeImage_.empty())
        return Answer(transcoder.TranscodeVideoFile(file_, maxFileSizeMB_, quality_, targetPath_,
                                                    newDuration_, output_, fps_),
                      output_, "Failed to transcode video file");
    return Answer(transcoder.TranscodeVideoFileWithMeme(file_, maxFileSizeMB_, quality_, targetPath_, output_,
                                                        fps_, ReadMeme(memeImage_)),
                  output_, "Failed to transcode video file with meme");
}

KXP::RetVal TranscodeMediaFile::TranscodeImage(const Transcoder& transcoder) {
    if (memeImage_.empty())
        return Answer(transcoder.TranscodeImageFile(file_, maxFileSizeMB_, quality_, targetPath_, output_),
                      output_, "Failed to transcode image file");
    return Answer(transcoder.TranscodeImageFileWithMeme(file_, maxFileSizeMB_, quality_, targetPath_, output_,
                                                        ReadMeme(memeImage_)),
                  output_, "Failed to transcode image file with meme");
}

void TranscodeMediaFile::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    response.AddMember("numIterations", output_.iterations, allocator);
    response.AddMember("userData", KXP::Value(userData_, allocator), allocator);
    response.AddMember("newFile", KXP::Value(output_.newFile, allocator), allocator);
    response.AddMember("newFileSizeB", output_.newFileSize, allocator);
    response.AddMember("newFileWidth", output_.newWidth, allocator);
    response.AddMember("newFileHeight", output_.newHeight, allocator);
}
