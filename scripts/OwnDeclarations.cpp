// A plugin of Clang's that keeps clang-tidy to what we wrote. By itself each of its checks walks through
// every declaration that a unit includes, the toolkit's and the standard library's too, to throw away what it
// finds there: that is nine tenths of its time. What the headers of a system declare is still parsed and
// known; it is not walked through. Newer releases of clang-tidy do the same.

#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/AST/Decl.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/FrontendAction.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

#include <memory>
#include <string>
#include <vector>

namespace {

class OwnDeclarations : public clang::ASTConsumer {
public:
    void HandleTranslationUnit(clang::ASTContext &context) override
    {
        const clang::SourceManager &sources = context.getSourceManager();
        std::vector<clang::Decl *> own;
        for (clang::Decl *declaration : context.getTranslationUnitDecl()->decls()) {
            const clang::SourceLocation place = declaration->getLocation();
            if (place.isValid() && !sources.isInSystemHeader(place))
                own.push_back(declaration);
        }
        context.setTraversalScope(own);
    }
};

class KeepToOwnDeclarations : public clang::PluginASTAction {
protected:
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance &, llvm::StringRef) override
    {
        return std::make_unique<OwnDeclarations>();
    }
    bool ParseArgs(const clang::CompilerInstance &, const std::vector<std::string> &) override
    {
        return true;
    }
    // Before the checks look.
    ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<KeepToOwnDeclarations> registration(
    "own-declarations", "leaves out what systems declare");

} // namespace
