// Shader programs as the effects see them: the program object with its uniform setters, the
// table of uniform locations filled when the program is linked, and the fixed attribute
// numbers.
#pragma once
#include "eEnums.h"
#include "eString.h"

namespace KYR
{

// Uniform locations of one linked program; -1 where the program has no such uniform. The
// leading members mean the same in every program; m_nCustom holds the program's own roles,
// in the order the program declares them.
struct eShaderUniform
{
    enum
    {
        MAX_CUSTOM = 64
    };

    int m_nWorldMatrix = -1;
    int m_nViewMatrix = -1;
    int m_nProjectionMatrix = -1;
    int m_nNormalMatrix = -1;
    int m_nTexture0 = -1; // first sampler
    int m_nLightingEnabled = -1;
    int m_nAmbient = -1;
    int m_nDiffuse = -1;
    int m_nSpecular = -1;
    int m_nShininess = -1;
    int m_nTextureEnabled = -1;
    int m_nColor = -1;
    int m_nTexture1 = -1; // second sampler
    int m_nCustom[MAX_CUSTOM];

    eShaderUniform()
    {
        for (int& n : m_nCustom)
            n = -1;
    }
};

// Generic attribute numbers. Every program binds its attribute inputs to these fixed numbers,
// so the table is the same for all programs.
struct eShaderAttribute
{
    int m_nPosition = eAI_POSITION;
    int m_nAttrib1 = eAI_ATTRIB1;
    int m_nColor = eAI_COLOR;
    int m_nAttrib3 = eAI_ATTRIB3;
    int m_nAttrib4 = eAI_ATTRIB4;
    int m_nAttrib5 = eAI_ATTRIB5;
    int m_nAttrib6 = eAI_ATTRIB6;
    int m_nTexCoord0 = eAI_TEXCOORD0;
    int m_nTexCoord1 = eAI_TEXCOORD1;
    int m_nTexCoord2 = eAI_TEXCOORD2;
    int m_nAttrib10 = eAI_ATTRIB10;
    int m_nAttrib11 = eAI_ATTRIB11;
    int m_nAttrib12 = eAI_ATTRIB12;
    int m_nAttrib13 = eAI_ATTRIB13;
    int m_nAttrib14 = eAI_ATTRIB14;
    int m_nAttrib15 = eAI_ATTRIB15;
};

// A linked OpenGL program. The setters write the program's uniforms whether or not it is
// current; location -1 is ignored, as OpenGL does.
class eProgram
{
public:
    // Takes ownership of the OpenGL program object `programId`.
    explicit eProgram(unsigned int programId = 0);
    virtual ~eProgram();
    eProgram(eProgram const&) = delete;
    eProgram& operator=(eProgram const&) = delete;

    virtual void Use();
    virtual int GetUniformLocation(eString const& name);
    virtual void UniformVector4(int location, float const* v);
    virtual void UniformVector4Scaled(int location, float scale, float const* v);
    virtual void Uniform4f(int location, float x, float y, float z, float w);
    virtual void Uniform3f(int location, float x, float y, float z);
    virtual void Uniform2f(int location, float x, float y);
    virtual void Uniform1f(int location, float x);
    virtual void Uniform2i(int location, int x, int y);
    virtual void Uniform1i(int location, int x);
    virtual void UniformArray2(int location, int count, float const* v);
    virtual void UniformArray3(int location, int count, float const* v);
    virtual void UniformMatrix3(int location, int count, unsigned char transpose, float const* m);
    virtual void UniformMatrix4(int location, int count, unsigned char transpose, float const* m);

    unsigned int GetProgramID() const { return m_nProgram; }

private:
    unsigned int m_nProgram;
};

// A program together with its location tables, as the host hands it out by name.
class eRenderProgram
{
public:
    eRenderProgram(eString const& name, eProgram* program, eShaderUniform const& uniforms);
    ~eRenderProgram();
    eRenderProgram(eRenderProgram const&) = delete;
    eRenderProgram& operator=(eRenderProgram const&) = delete;

    eProgram* GetProgram() { return m_pProgram; }
    eShaderUniform* GetUniform() { return &m_Uniform; }
    eShaderAttribute* GetAttribute() { return &m_Attribute; }
    eString const& GetName() const { return m_strName; }

private:
    eString m_strName;
    eProgram* m_pProgram;
    eShaderUniform m_Uniform;
    eShaderAttribute m_Attribute;
};

} // namespace KYR
