#pragma once

#include <string>

namespace datamodel {

class Band;
class Block;
class CameraTime;
class EopTrajectory;
class Image;
class ImageCollection;
class ImuTrajectory;
class InfoFile;
class L0Image;
class L1Image;
class L2Image;
class RecordingSession;
class Take;
class Validatable;

/// A visitor over the object tree. traverse(obj) makes `obj` call back the
/// validate() overload of its own class; each overload decides what to check
/// and which children to visit. Problems go to three optional sinks owned by
/// the caller; a null sink drops its messages. Copies share the sinks.
class ValidationTraverser {
public:
    /// Receives information messages.
    class Information {
    public:
        virtual ~Information() = default;
        virtual void information(const std::string& message) = 0;
    };
    /// Receives warnings.
    class Warning {
    public:
        virtual ~Warning() = default;
        virtual void warning(const std::string& message) = 0;
    };
    /// Receives errors.
    class Error {
    public:
        virtual ~Error() = default;
        virtual void error(const std::string& message) = 0;
    };

    ValidationTraverser(Information* information = nullptr, Warning* warning = nullptr, Error* error = nullptr);
    ValidationTraverser(const ValidationTraverser&) = default;
    ValidationTraverser& operator=(const ValidationTraverser&) = default;
    virtual ~ValidationTraverser();

    /// Calls `object.traverse(*this)`.
    void traverse(Validatable& object);

    /// Walks the session as an image collection.
    virtual void validate(RecordingSession& session);
    /// Walks the block as an image collection.
    virtual void validate(Block& block);
    /// Traverses every level-0 image, every level-2 image, then every nested
    /// collection, each in stored order.
    virtual void validate(ImageCollection& collection);
    /// Walks the take as an image collection.
    virtual void validate(Take& take);
    /// Traverses every band of the image in order.
    virtual void validate(Image& image);
    /// Walks the image's bands.
    virtual void validate(L0Image& image);
    /// Walks the image's bands.
    virtual void validate(L1Image& image);
    /// Walks the image's bands.
    virtual void validate(L2Image& image);
    /// Checks nothing.
    virtual void validate(Band& band);
    /// Checks nothing.
    virtual void validate(InfoFile& file);
    /// Checks nothing (called by CameraTime::traverse once the times are loaded).
    virtual void validate(CameraTime& times);
    /// Checks nothing.
    virtual void validate(ImuTrajectory& trajectory);
    /// Checks nothing.
    virtual void validate(EopTrajectory& trajectory);

protected:
    virtual void error(const std::string& message);
    virtual void warning(const std::string& message);
    virtual void information(const std::string& message);

    Information* informationSink() const { return m_information; }
    Warning* warningSink() const { return m_warning; }
    Error* errorSink() const { return m_error; }

private:
    Information* m_information;
    Warning* m_warning;
    Error* m_error;
};

} // namespace datamodel
