#ifndef CRAWLER_AUXFILEIDENTIFIERVALIDATOR_H
#define CRAWLER_AUXFILEIDENTIFIERVALIDATOR_H

#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/Export.h"
#include "host/ValidatorInterface.h"

class AuxFileCollectionInterface;
class AuxFileInfoInterface;
class TagValidator;

/// The user's choice of auxiliary files: those that a syntax name selects, to be filed under a tag.
struct AuxFileIdentifier {
    /// A wildcard over the files' paths, as SyntaxNameFilter reads it.
    std::string syntaxName;
    /// The label under which the selected files are filed.
    std::string tag;
};

/// Judges a list of identifiers and collects the auxiliary files that they select.
///
/// Built once per set of files, which it shares. Its answers depend on a cache of the syntax names
/// judged so far, which even const operations change: use one validator from one thread at a time.
/// Exceptions of the provider, of the tag validator and of the files pass through.
class CRAWLER_API AuxFileIdentifierValidator {
public:
    /// Supplies the identifiers. It is asked afresh by identifiers(), auxFiles() and isValid(), by
    /// the last twice, so its answer may change between calls.
    class CRAWLER_API IdentifierProviderInterface {
    public:
        /// The identifiers, in the order in which they select.
        virtual std::vector<AuxFileIdentifier> identifiers() const = 0;
        virtual ~IdentifierProviderInterface();
    };

    /// Keeps a reference to `provider`, which must outlive the validator, and shares the files and
    /// the tag validator; neither these nor any file may be empty pointers. Of several files with
    /// the same path only the last is ever collected. Paths count as the same when they are equal
    /// as UTF-16, read as UTF-8: two that differ in bytes that are not UTF-8 may be.
    ///
    /// Give it matched files only, such as MetadataFileCrawler::identifiedAuxFiles(): whether a
    /// file is matched is never asked, and an unmatched one is collected like any other.
    AuxFileIdentifierValidator(const IdentifierProviderInterface& provider,
                               std::vector<boost::shared_ptr<AuxFileInfoInterface>> auxFiles,
                               boost::shared_ptr<TagValidator> tagValidator);
    AuxFileIdentifierValidator(const AuxFileIdentifierValidator&) = delete;
    AuxFileIdentifierValidator& operator=(const AuxFileIdentifierValidator&) = delete;
    virtual ~AuxFileIdentifierValidator();

    /// True when every identifier that is not wholly empty has an acceptable tag and a syntax name
    /// that selects a file; stops at the first that has not.
    ///
    /// The syntax names visited, also the one that failed, then become the names that are known to
    /// be valid, in place of those before: syntaxNameValidator() and the next isValid() accept them
    /// without matching. When the provider or the tag validator throws, the known names stay.
    bool isValid() const;

    /// What the provider answers.
    std::vector<AuxFileIdentifier> identifiers() const;

    /// A new collection of the selected files, by the caseIndex() that each has now and by tag.
    /// Each file stands in it at most once, under the first identifier that selects it; identifiers
    /// with an unacceptable tag or syntax name are left out.
    ///
    /// A collection takes memory for every index up to the highest. Throws std::length_error ("case
    /// index too large") for an index up to which no memory could hold them.
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles();

    /// The validator of syntax names, shared with this object; its message is "Invalid pattern.".
    boost::shared_ptr<ortelo::ValidatorInterface<std::string>> syntaxNameValidator() const;

    /// The tag validator given at construction.
    boost::shared_ptr<ortelo::ValidatorInterface<std::string>> tagValidator() const;

private:
    struct CRAWLER_LOCAL Impl;
    const std::unique_ptr<Impl> impl_;
};

#endif
