// The rest of OpenGL ES 2.0, which the plug-in has no reason to call. Without gl2.h: only names matter.
#include "plugin/trace.h"

// clang-format off
#define UNEXPECTED(name)                                                                                     \
    extern "C" void name(void) { fault("unexpected GL call: " #name); }
UNEXPECTED(glBindFramebuffer) UNEXPECTED(glBindRenderbuffer) UNEXPECTED(glBlendColor)
UNEXPECTED(glBlendEquation) UNEXPECTED(glBlendEquationSeparate) UNEXPECTED(glBlendFunc)
UNEXPECTED(glBufferSubData) UNEXPECTED(glCheckFramebufferStatus) UNEXPECTED(glClearColor)
UNEXPECTED(glClearDepthf) UNEXPECTED(glClearStencil) UNEXPECTED(glColorMask)
UNEXPECTED(glCompressedTexImage2D) UNEXPECTED(glCompressedTexSubImage2D) UNEXPECTED(glCopyTexImage2D)
UNEXPECTED(glCopyTexSubImage2D) UNEXPECTED(glCullFace) UNEXPECTED(glDeleteFramebuffers)
UNEXPECTED(glDeleteRenderbuffers) UNEXPECTED(glDepthRangef) UNEXPECTED(glDetachShader)
UNEXPECTED(glFinish) UNEXPECTED(glFlush)
UNEXPECTED(glFramebufferRenderbuffer) UNEXPECTED(glFramebufferTexture2D) UNEXPECTED(glGenFramebuffers)
UNEXPECTED(glGenRenderbuffers) UNEXPECTED(glGenerateMipmap) UNEXPECTED(glGetActiveAttrib)
UNEXPECTED(glGetAttachedShaders) UNEXPECTED(glGetAttribLocation) UNEXPECTED(glGetBooleanv)
UNEXPECTED(glGetBufferParameteriv) UNEXPECTED(glGetFloatv) UNEXPECTED(glGetFramebufferAttachmentParameteriv)
UNEXPECTED(glGetRenderbufferParameteriv) UNEXPECTED(glGetShaderPrecisionFormat)
UNEXPECTED(glGetShaderSource) UNEXPECTED(glGetTexParameterfv) UNEXPECTED(glGetTexParameteriv)
UNEXPECTED(glGetUniformfv) UNEXPECTED(glGetUniformiv) UNEXPECTED(glGetVertexAttribPointerv)
UNEXPECTED(glGetVertexAttribfv) UNEXPECTED(glGetVertexAttribiv) UNEXPECTED(glHint) UNEXPECTED(glIsEnabled)
UNEXPECTED(glIsFramebuffer) UNEXPECTED(glIsRenderbuffer) UNEXPECTED(glIsTexture) UNEXPECTED(glLineWidth)
UNEXPECTED(glPolygonOffset) UNEXPECTED(glReadPixels)
UNEXPECTED(glReleaseShaderCompiler) UNEXPECTED(glRenderbufferStorage) UNEXPECTED(glSampleCoverage)
UNEXPECTED(glScissor) UNEXPECTED(glShaderBinary) UNEXPECTED(glStencilFunc) UNEXPECTED(glStencilFuncSeparate)
UNEXPECTED(glStencilMask) UNEXPECTED(glStencilMaskSeparate) UNEXPECTED(glStencilOp)
UNEXPECTED(glStencilOpSeparate) UNEXPECTED(glTexParameterfv) UNEXPECTED(glTexParameteriv)
UNEXPECTED(glTexSubImage2D) UNEXPECTED(glUniform1f) UNEXPECTED(glUniform1i) UNEXPECTED(glUniform2f)
UNEXPECTED(glUniform2i) UNEXPECTED(glUniform3f) UNEXPECTED(glUniform3i) UNEXPECTED(glUniform4f)
UNEXPECTED(glUniform4i) UNEXPECTED(glVertexAttrib1f) UNEXPECTED(glVertexAttrib1fv)
UNEXPECTED(glVertexAttrib2f) UNEXPECTED(glVertexAttrib2fv) UNEXPECTED(glVertexAttrib3f)
UNEXPECTED(glVertexAttrib3fv) UNEXPECTED(glVertexAttrib4f) UNEXPECTED(glVertexAttrib4fv)
