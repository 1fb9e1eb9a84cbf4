// SPDX-License-Identifier: Apache-2.0
// Owns the precompiled headers of the tests beside it; has nothing of its own.
