// Call recorder of the reference host. When switched on, the host notes the calls
// it receives from effects (uniforms, draws, texture binds, passes, queue entries,
// assertion reports) so that tests can observe an effect the way the host sees it.
// Effects never see this header.
#pragma once
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace KYR
{
namespace Host
{

struct eRecord
{
    enum Kind
    {
        Uniform,       // op: "Uniform1f", ...; location; uniform: GLSL name; values
        Draw,          // op: "DrawIndexed", "DrawIndexRange", "DrawVertices", "glDrawArrays", ...; mode, count, first
        BindTexture,   // op: "glBindTexture"; target in mode, texture name in count, active unit in first
        ActiveTexture, // op: "ActiveTexture"; unit enum in first
        BeginPass,     // op: program name of the pass
        EndPass,
        Queue,         // op: "AddRenderable", "AddSolidTextureRenderable", ...; group in first
        Assert,        // op: expression; uniform: file; first: line
        Blend,         // op: "glBlendFunc", "BlendFuncSeparate", "BlendEquationSeparate"; values: arguments
        Other,
    };
    Kind kind = Other;
    std::string op;
    std::string uniform;
    int location = -1;
    int mode = 0;
    long long count = 0;
    long long first = 0;
    std::vector<double> values;
    void const* object = nullptr;    // effect (Queue)
    void const* technique = nullptr; // technique (Queue)
};

class eRecorder
{
public:
    static eRecorder& Get();
    void Start(); // clears and switches on
    void Stop();
    bool IsOn() const { return m_bOn; }
    void Clear();
    // Safe from any thread: assertion reports may arrive off the render thread.
    void Add(eRecord const& r);
    std::vector<eRecord> Records() const;
    // Records of one kind, in order.
    std::vector<eRecord> Of(eRecord::Kind kind) const;

private:
    std::atomic<bool> m_bOn{false};
    mutable std::mutex m_mutex;
    std::vector<eRecord> m_records;
};

} // namespace Host
} // namespace KYR
