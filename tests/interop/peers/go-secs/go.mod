module hexmire/interop/peer

go 1.26.0

require github.com/arloliu/go-secs/v2 v2.8.0
