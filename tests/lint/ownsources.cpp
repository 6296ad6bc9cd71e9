// A plug-in of clang-tidy: lets its checks look at our declarations alone. By itself it takes every
// declaration of every header through every check, and then drops what it finds in the system's:
// four fifths of its time.
#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

#include <memory>
#include <string>
#include <vector>

namespace {

class OwnSources : public clang::ASTConsumer
{
public:
    void HandleTranslationUnit(clang::ASTContext &context) override
    {
        const clang::SourceManager &sources = context.getSourceManager();
        std::vector<clang::Decl *> own;
        // What is in a precompiled header stays there.
        for (clang::Decl *declaration : context.getTranslationUnitDecl()->noload_decls()) {
            // What a macro of the system's makes in our file is ours.
            if (!sources.isInSystemHeader(sources.getExpansionLoc(declaration->getLocation())))
                own.push_back(declaration);
        }
        context.setTraversalScope(own);
    }
};

class LookAtOwnSources : public clang::PluginASTAction
{
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance &,
                                                          llvm::StringRef) override
    {
        return std::make_unique<OwnSources>();
    }
    bool ParseArgs(const clang::CompilerInstance &, const std::vector<std::string> &) override
    {
        return true;
    }
    ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<LookAtOwnSources>
    registration("own-sources", "leaves the system's headers unchecked");

} // namespace
