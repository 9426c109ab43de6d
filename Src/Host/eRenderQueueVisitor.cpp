#include "eRenderQueueVisitor.h"

#include "eGLContext.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRecorder.h"

#include <epoxy/gl.h>

namespace KYR
{

namespace
{

void SetEnabled(GLenum cap, bool enabled)
{
    if (enabled)
        glEnable(cap);
    else
        glDisable(cap);
}

} // namespace

void eRenderQueueVisitor::BeginPass(ePass* pass)
{
    if (!pass)
        return;
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (rec.IsOn())
    {
        Host::eRecord r;
        r.kind = Host::eRecord::BeginPass;
        r.op = pass->GetProgram().Str();
        rec.Add(r);
    }
    if (!Host::eGLContext::Get().IsReady())
        return;

    // A pass without a program, or with an unknown one (reported once by the library),
    // draws with no program.
    eRenderProgram* program = pass->GetProgram().IsEmpty()
                                  ? nullptr
                                  : Host::eProgramLibrary::Get().Find(pass->GetProgram());
    if (program && program->GetProgram())
    {
        program->GetProgram()->Use();
        // The scene's projection kind, for programs that place geographic vertices without
        // being told the kind by their effect.
        GLint kind = glGetUniformLocation(program->GetProgram()->GetProgramID(), "u_sceneProjKind");
        if (kind >= 0)
            glUniform1f(kind, (float)Host::eGLContext::Get().GetSceneProjKind());
    }
    else
        glUseProgram(0);

    SetEnabled(GL_BLEND, pass->IsTransparent() != 0);
    {
        Host::eDirectCallMute mute; // the pass's state is the host's, not the effect's
        glBlendFunc((GLenum)pass->GetSourceBlendFactor(), (GLenum)pass->GetDestBlendFactor());
    }

    SetEnabled(GL_DEPTH_TEST, pass->GetDepthCheckEnabled() != 0);
    glDepthMask(pass->GetDepthWriteEnabled() ? GL_TRUE : GL_FALSE);
    glDepthFunc((GLenum)pass->GetDepthFunc());

    float const slope = pass->GetDepthBiasSlopeScale();
    float const constant = pass->GetDepthBiasConstant();
    bool const bBias = slope != 0.0f || constant != 0.0f;
    SetEnabled(GL_POLYGON_OFFSET_FILL, bBias);
    SetEnabled(GL_POLYGON_OFFSET_LINE, bBias);
    glPolygonOffset(slope, constant);

    // Sizes of zero or less are errors in OpenGL; they leave the default of 1.
    glLineWidth(pass->GetLineWidth() > 0.0f ? pass->GetLineWidth() : 1.0f);
    glPointSize(pass->GetPointSize() > 0.0f ? pass->GetPointSize() : 1.0f);
    SetEnabled(GL_POINT_SPRITE, pass->GetPointSpriteEnabled() != 0);
    SetEnabled(GL_PROGRAM_POINT_SIZE, pass->GetPointSpriteEnabled() != 0);
}

void eRenderQueueVisitor::EndPass()
{
    Host::ApplyHostDefaults();
    Host::eRecorder& rec = Host::eRecorder::Get();
    if (rec.IsOn())
    {
        Host::eRecord r;
        r.kind = Host::eRecord::EndPass;
        rec.Add(r);
    }
}

} // namespace KYR
