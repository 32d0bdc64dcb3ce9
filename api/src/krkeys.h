// The command keys: for each letter a pair of functions, X_info with the text of what the key will do, which changes
// nothing, and X_apply, which does it, beside its help texts. "?" is spelled hq.
#pragma once

#include "krstring.h"

class krSession;

#define KR_DECLARE_KEY(letter)                                                                                         \
    krString letter##_info(const krString& arg);                                                                       \
    void letter##_apply(const krString& arg, krSession* session);                                                      \
    extern const char* letter##_help;                                                                                  \
    extern const char* letter##_descr;

KR_DECLARE_KEY(B)
KR_DECLARE_KEY(A)
KR_DECLARE_KEY(d)
KR_DECLARE_KEY(i)
KR_DECLARE_KEY(I)
KR_DECLARE_KEY(P)
KR_DECLARE_KEY(o)
KR_DECLARE_KEY(O)
KR_DECLARE_KEY(L)
KR_DECLARE_KEY(r)
KR_DECLARE_KEY(R)
KR_DECLARE_KEY(q)
KR_DECLARE_KEY(Q)
KR_DECLARE_KEY(u)
KR_DECLARE_KEY(U)
KR_DECLARE_KEY(g)
KR_DECLARE_KEY(n)
KR_DECLARE_KEY(p)
KR_DECLARE_KEY(l)
KR_DECLARE_KEY(f)
KR_DECLARE_KEY(t)
KR_DECLARE_KEY(F)
KR_DECLARE_KEY(Y)
KR_DECLARE_KEY(H)
KR_DECLARE_KEY(T)
KR_DECLARE_KEY(N)
KR_DECLARE_KEY(S)
KR_DECLARE_KEY(C)
KR_DECLARE_KEY(s)
KR_DECLARE_KEY(e)
KR_DECLARE_KEY(v)
KR_DECLARE_KEY(h)
#undef KR_DECLARE_KEY

krString hq_info(const krString& arg);
void hq_apply(const krString& arg, krSession* session);
extern const char* hq_descr;

// The memory table has no key in this version; its functions stand ready beside the others.
krString m_info(const krString& arg);
void m_apply(const krString& arg, krSession* session);
extern const char* m_help;

/// Bits of -A: T 1, P 2, M 4; none of them 15.
int getAskLevel(const krString& arg);
/// Bits of -L: each capital letter by itself.
int getLevel(const krString& arg);
/// Mode of -Y: H 1, N 2, L 3, else 0.
int getPriority(const krString& arg);
