<?php
// What the provider is told for one request comes in headers: the outcome here, what to sign there.
$setup = json_decode(file_get_contents(getenv('INTEROP_FOLDER') . '/setup.json'), true);
$metadata[$setup['idp']] = [
    'host' => '__DEFAULT__',
    'auth' => 'subscriber',
    'privatekey' => 'key.pem',
    'certificate' => 'cert.pem',
    'authproc' => [
        10 => ['class' => 'saml:AttributeNameID', 'attribute' => 'username', 'Format' => $setup['name_format']],
        20 => ['class' => 'core:PHP', 'code' => '
            $status = "urn:oasis:names:tc:SAML:2.0:status:";
            if (preg_match("/Failed|Denied/", $_SERVER["HTTP_X_OUTCOME"]))
                throw new \SimpleSAML\Module\saml\Error($status . "Responder", $status . $_SERVER["HTTP_X_OUTCOME"]);
        '],
    ],
];
